"""Tests the completions of kestrel and nodal in a real shell.

    completion_test.py SHELL COMPLETIONS PROGRAMS SAMPLES

The last three arguments are folders: the completions for the shell, the programs, and the sample snapshot.
"""

import json
import os
import subprocess
import sys
import tempfile
import unittest

import shells

SHELL, COMPLETIONS, BUILT, SAMPLES = sys.argv[1:5]
# A link, because the path of a clone may contain a colon, which separates the folders in PATH.
LINKS = tempfile.TemporaryDirectory()
PROGRAMS = LINKS.name + '/bin'
os.symlink(BUILT, PROGRAMS)
SNAPSHOT = 'two-vms.nodal'


def printed(*arguments):
    return subprocess.run([PROGRAMS + '/kestrel', *arguments], capture_output=True, text=True, check=True).stdout


def usage_reports():
    lists = printed('-h').split('Supported report types:\n')[1].split('\n\n')[0]
    return [line.strip() for line in lists.splitlines()]


def header(report):
    return printed('-c', SAMPLES + '/' + SNAPSHOT, '-r', report, '-q').splitlines()[0].split(',')


# Names that anyone may give to a heap or a file. If a shell evaluates one of them, the file X may appear.
HOSTILE = ['main;touch${IFS}X', '$(touch X)', '`touch X`', '(touch X)', '|touch X', '&touch X&', '>X', '$HOME',
           "a'b", 'a"b', 'a\\b', 'a\\', 'a b  c', 'trail ', '*', '?', '[a-z]', '{a,b}', '~', '-rf', '#c', '!ls', '^x^y',
           'a:b=c', 'a$1\\0b', '%n%s', 'new\nline', '\ttab', '\x1b]0;title\x07', 'caf\u00e9 \u2603']


class Completion(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        for name in (SNAPSHOT, 'a:b.nodal', 'with blank.nodal'):
            os.symlink(SAMPLES + '/' + SNAPSHOT, cls.folder.name + '/' + name)
        os.chdir(cls.folder.name)
        environment = {'PATH': PROGRAMS + ':' + os.environ['PATH'], 'HOME': cls.folder.name, 'TERM': 'dumb',
                       'LC_ALL': 'C.UTF-8'}
        files = [os.path.join(COMPLETIONS, name) for name in os.listdir(COMPLETIONS)]
        if SHELL == 'bash':
            cls.shell = shells.bash(environment, files)
        elif SHELL == 'zsh':
            cls.shell = shells.zsh(environment, COMPLETIONS)
        else:
            cls.shell = shells.Fish(environment, files)

    @classmethod
    def tearDownClass(cls):
        cls.shell.close()
        cls.folder.cleanup()

    def offers(self, line, expected):
        with self.subTest(line):
            self.assertEqual(self.shell.offers(line), set(expected.split() if isinstance(expected, str) else expected))

    def test_reports(self):
        self.assertEqual(len(usage_reports()), 19)
        self.offers('kestrel -r ', usage_reports())
        self.offers('kestrel --report ', usage_reports())
        self.offers('kestrel -c %s -r gro' % SNAPSHOT, 'group-stats')
        self.offers('kestrel -rgro', '-rgroup-stats')
        self.offers('kestrel --report=gro', 'group-stats')
        self.offers('kestrel --force -r PSHAREH', 'pshareHint-stats')
        self.offers('kestrel -r zzz', '')

    def test_global_options_precede_the_report(self):
        self.offers('kestrel -', '-c --cache -f --force -h --help -r --report')
        self.offers('kestrel -c %s --' % SNAPSHOT, '--force --help --report' if SHELL == 'zsh' else
                    '--cache --force --help --report')
        self.offers('kestrel -r lpool-stats --', '--cSelect --csvMode --verbose')

    def test_the_argument_of_f_is_not_an_option(self):
        self.offers('kestrel -f -r --rep', '--report')
        self.offers('kestrel -f -r vm-stats --cS', '')
        self.offers('kestrel --force -r vm-stats --cS', '--cSelect')

    def test_options_of_each_report(self):
        common = '-s --cSelect -v --verbose -q --csvMode '
        group = common + '-g --gid -l --level -u --unit '
        self.offers('kestrel -r group-stats -', group + '-i --iFilter -e --eFilter -t --tags')
        self.offers('kestrel -r vm-stats -', group)
        self.offers('kestrel -r UW-STATS -', group + '-i --iFilter -e --eFilter')
        self.offers('kestrel -r asyncremap-stats -', common + '-g --gid -u --unit')
        self.offers('kestrel --report=comp-stats -', common + '-u --unit')
        self.offers('kestrel -rbuddy-stats -', common)
        # In heap-stats, --verbose prints no descriptions of the columns, so the shells do not offer it.
        self.offers('kestrel -r heap-stats -', '-s --cSelect -v -q --csvMode -u --unit')
        self.offers('kestrel -r dcpmm-stats -', '-t --time -i --iterations -v --verbose -q --csvMode')

    def test_columns_of_each_report(self):
        for report in usage_reports():
            if report != 'dcpmm-stats':
                self.offers('kestrel -r %s -s ' % report, header(report))
        self.assertNotIn('Socket', self.shell.offers('kestrel -r dcpmm-stats -s '))

    def test_lists_of_columns(self):
        self.offers('kestrel -r vm-stats -s name:mem', 'memSize memSizeLimit')
        self.offers('kestrel -r vm-stats -q -s name:memSize:mem', 'memSizeLimit')
        self.offers('kestrel -r vm-stats --cSelect name:balloonT', 'balloonTgt')
        self.offers('kestrel -r vm-stats --cSelect=name:balloonT', 'balloonTgt')
        self.offers('kestrel -r pshareHint-stats -s type:active:', 'totAdd totRemove')
        self.offers('kestrel -r swap-stats -s COW', 'COWSwapper')
        self.offers('kestrel -r swap-stats -s NAME:cowswa', 'COWSwapper')
        self.offers('kestrel -r vm-stats -s zzz', '')

    def test_units(self):
        for report in usage_reports():
            line = 'kestrel -r %s -u ' % report
            if report in ('buddy-stats', 'lpool-stats', 'dcpmm-stats'):
                self.assertFalse(self.shell.offers(line) & {'b', 'kb', 'mb', 'pg'}, line)
            else:
                self.offers(line, ('b ' if report == 'heap-stats' else '') + 'kb mb pg')
                for unit in self.shell.offers(line):
                    printed('-c', SNAPSHOT, '-r', report, '-u', unit)
        self.offers('kestrel -r vm-stats --unit=', 'kb mb pg')

    def test_flags(self):
        flags = 'pre lf vm uw sys tw pr sd np ke ug co sc vmm usr'
        self.offers('kestrel -r group-stats -i ', flags)
        self.offers('kestrel -r group-stats -e ', flags)
        self.offers('kestrel -r group-stats --eFilter=lf:s', 'sys sd sc')
        self.offers('kestrel -r group-stats -i vm:vm', 'vmm')
        self.offers('kestrel -r uw-stats -i ', 'uw vm')
        self.offers('kestrel -r uw-stats --eFilter vm:', 'uw')
        self.assertFalse(self.shell.offers('kestrel -r vm-stats -i ') & set(flags.split()))
        self.offers('kestrel -r dcpmm-stats -i ', '')

    def test_snapshots(self):
        self.offers('kestrel -c t', SNAPSHOT)
        self.offers('kestrel --cache t', SNAPSHOT)
        self.offers('kestrel --cache=t', SNAPSHOT)
        self.offers('kestrel -ct', '' if SHELL == 'bash' else '-c' + SNAPSHOT)
        self.offers('kestrel -c %s/t' % self.folder.name, self.folder.name + '/' + SNAPSHOT)

    def test_nodal(self):
        commands = subprocess.run([PROGRAMS + '/nodal', '--help'], capture_output=True, text=True, check=True).stdout
        commands = commands.split('Commands:\n')[1].splitlines()
        self.offers('nodal ', [line.split()[0] for line in commands if line.startswith('  ') and line[2] != ' '])
        self.offers('nodal --cache %s ver' % SNAPSHOT, 'verify')
        self.offers('nodal --c', '--cache')
        self.offers('nodal capture --o', '--only --output')
        self.offers('nodal capture -', '-h --help --version --cache --root -o --output --only --anonymize --key-file')
        self.offers('nodal capture --key-file t', SNAPSHOT)
        self.offers('nodal --cache t', SNAPSHOT)
        self.offers('nodal --cache=t', SNAPSHOT)
        self.offers('nodal verify t', SNAPSHOT)
        self.offers('nodal build -o t', SNAPSHOT)

    def test_paths_of_the_tree(self):
        self.offers('nodal --cache %s ls ' % SNAPSHOT, '/hardware/ /memory/ /sched/ /system/ /worldGroups/')
        self.offers('nodal --cache=%s get /sched/groups/10/group' % SNAPSHOT,
                    ['/sched/groups/10/' + name for name in ('groupFlags', 'groupLeaderID', 'groupName', 'groupTag')])
        self.offers('nodal ls --cache %s /memory/pm' % SNAPSHOT, '/memory/pmem/')
        self.offers('nodal --cache %s capture --only /sys' % SNAPSHOT, '/system/')
        self.offers('nodal --cache %s get --json /memory/memI' % SNAPSHOT, '/memory/memInfo')

    def runs(self, keys, expected):
        """Types and runs a line, and compares its output. No part of the line creates the file X."""
        self.shell.run(keys + ' >got')
        with open('got', encoding='utf-8') as got:
            self.assertEqual(got.read(), expected, self.shell.line_after(keys))
        os.remove('got')
        self.assertFalse(os.path.exists('X'), keys)

    def test_hostile_names_in_a_tree(self):
        nodes = {'/system/heaps': []}
        for i, name in enumerate(HOSTILE):
            heap = 'h%02d%s' % (i, name)
            encoded = ''.join('%%%02X' % ord(c) if c < ' ' or c in '%/' else c for c in heap)
            nodes['/system/heaps'].append(heap)
            nodes['/system/heaps/' + encoded + '/stats'] = {'size': i}
        with open('heaps.json', 'w', encoding='utf-8') as file:
            json.dump({'format': 1, 'nodes': nodes}, file)
        subprocess.run([PROGRAMS + '/nodal', 'build', 'heaps.json', '-o', 'heaps.nodal'], check=True)
        for i, name in enumerate(HOSTILE):
            expected = subprocess.run([PROGRAMS + '/nodal', '--cache', 'heaps.nodal', 'get',
                                       [path for path in nodes if path.startswith('/system/heaps/h%02d' % i)][0]],
                                      capture_output=True, text=True, check=True).stdout
            start = '/system/heaps/h%02d' % i
            with self.subTest(name):
                self.runs('nodal --cache heaps.nodal get ' + start + '\t\t', expected)
            for quote in '\'"':
                with self.subTest(name, quote=quote):
                    # bash closes the quotation after the completed name; the other shells leave it open.
                    rest = 'stats' if SHELL == 'bash' else 'stats' + quote
                    self.runs('nodal --cache heaps.nodal get ' + quote + start + '\t' + rest, expected)

    def test_hostile_names_of_files(self):
        expected = printed('-c', SNAPSHOT, '-r', 'vm-stats', '-q')
        for i, name in enumerate(HOSTILE):
            if SHELL == 'fish' and ('\n' in name or '\t' in name):
                continue  # newlines and tabs separate fish's suggestions
            os.symlink(SAMPLES + '/' + SNAPSHOT, 'f%02d%s' % (i, name))
            for start in ('kestrel -c f%02d' % i, 'kestrel --cache=f%02d' % i):
                with self.subTest(start + name):
                    self.runs(start + '\t -r vm-stats -q', expected)
        if SHELL != 'fish':  # fish suggests no file whose name starts with a dash
            os.symlink(SAMPLES + '/' + SNAPSHOT, '-leading dash')
            self.runs('kestrel -c -l\t -r vm-stats -q', expected)

    @unittest.skipIf(SHELL == 'fish', 'fish prints its suggestions without a terminal')
    def test_tab(self):
        # zsh removes the colon when a blank follows.
        more = ':' if SHELL == 'zsh' else ''
        for line, expected in [
                ('kestrel -r gro', 'kestrel -r group-stats '),
                ('echo | kestrel -r gro', 'echo | kestrel -r group-stats '),
                ('kestrel -r vm-stats -s name:balloonT', 'kestrel -r vm-stats -s name:balloonTgt' + more),
                ('kestrel -r vm-stats --cSelect=name:BALLOONE', 'kestrel -r vm-stats --cSelect=name:ballooned' + more),
                ('kestrel -r vm-stats -s name:mem', 'kestrel -r vm-stats -s name:memSize'),
                ('kestrel -r group-stats -i vm:us', 'kestrel -r group-stats -i vm:usr' + more),
                ('kestrel -c t', 'kestrel -c %s ' % SNAPSHOT),
                ('kestrel -c a', 'kestrel -c %s ' % ('a\\:b.nodal' if SHELL == 'bash' else 'a:b.nodal')),
                ('kestrel -c a\\:', 'kestrel -c %s ' % ('a\\:b.nodal' if SHELL == 'bash' else 'a:b.nodal')),
                ('kestrel -c with\\ b', 'kestrel -c with\\ blank.nodal '),
                ('nodal --cache %s get /sched/groups/10/memAl' % SNAPSHOT,
                 'nodal --cache %s get /sched/groups/10/memAllocationInKB' % SNAPSHOT)]:
            with self.subTest(line):
                self.assertEqual(self.shell.line_after(line + '\t'), expected)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1], verbosity=2)
