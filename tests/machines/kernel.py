"""Downloads and unpacks Debian's kernel without installing it. The smaller cloud kernel lacks zswap.

    kernel.py FOLDER

The kernel is FOLDER/vmlinuz, and its modules are in FOLDER/lib/modules.
"""

import glob
import os
import re
import shutil
import subprocess
import sys

import machines

PACKAGE = "linux-image-amd64"


def output(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout


def main(folder):
    if os.path.exists(f"{folder}/vmlinuz"):
        return
    partial = f"{folder}.part"
    shutil.rmtree(partial, ignore_errors=True)
    os.makedirs(partial)
    # A metapackage, which depends on the package of the newest kernel.
    newest = re.search(r"Depends: (linux-image-\S+)", output("apt-cache", "depends", PACKAGE))
    output("apt-get", "-q", "download", newest[1], cwd=partial)
    [archive] = glob.glob(f"{glob.escape(partial)}/*.deb")
    output("dpkg-deb", "-x", archive, partial)
    os.remove(archive)
    [kernel] = glob.glob(f"{glob.escape(partial)}/boot/vmlinuz-*")
    os.rename(kernel, f"{partial}/vmlinuz")
    shutil.rmtree(folder, ignore_errors=True)
    os.rename(partial, folder)


if __name__ == "__main__":
    try:
        main(sys.argv[1])
    except (OSError, subprocess.CalledProcessError, TypeError, ValueError) as error:
        print(f"Skipped: Debian's package {PACKAGE} cannot be had here: {error}")
        sys.exit(machines.SKIPPED)
