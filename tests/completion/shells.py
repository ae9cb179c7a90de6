"""Runs shells, and returns their suggestions for a typed line and the line after Tab."""

import os
import pty
import re
import select
import shlex
import signal
import subprocess
import time


class Terminal:
    """A shell on its own terminal. A key makes its line editor print the line between two marks."""

    SHOW = '\x18\x12'  # ^X^R

    def __init__(self, command, environment, setup, clear, insert_all):
        self._clear = clear
        self._insert_all = insert_all
        self._pid, self._fd = pty.fork()
        if self._pid == 0:
            os.execvpe(command[0], command, environment)
        # The terminal itself must not act on ^R.
        for line in ['stty rprnt undef'] + setup + ["printf '<<%s>>' ready"]:
            os.write(self._fd, (line + '\n').encode())
        while self._marked() != 'ready':
            pass

    def close(self):
        os.close(self._fd)
        os.kill(self._pid, signal.SIGKILL)
        os.waitpid(self._pid, 0)

    def line_after(self, keys):
        """Returns the line after typing the keys into an empty line."""
        os.write(self._fd, (self._clear + keys + self.SHOW).encode())
        return self._marked()

    def offers(self, line):
        """Returns the suggestions for the text after the last blank, colon or equals sign of the line."""
        head = line[:max(line.rfind(c) for c in ' :=') + 1]
        whole = self.line_after(line + self._insert_all)
        if whole == line:
            return set()
        assert whole.startswith(head), (head, whole)
        # zsh appends a colon or an equals sign if more may follow, and repeats the prefix from the second suggestion on.
        return {offer.removeprefix(head[head.rfind(' ') + 1:]).rstrip(':=') for offer in whole[len(head):].split()}

    def run(self, keys):
        """Types the keys into an empty line, and returns when the shell has run the line."""
        os.write(self._fd, (self._clear + keys + "\nprintf '<<%s>>' done\n").encode())
        while self._marked() != 'done':
            pass

    def _marked(self):
        seen = ''
        end = time.monotonic() + 60
        while time.monotonic() < end:
            if select.select([self._fd], [], [], 1)[0]:
                seen += os.read(self._fd, 65536).decode(errors='replace')
            # The terminal also echoes the commands that print the marks.
            marked = re.search('<<(.*?)>>', seen.replace('<<%s>>', ''), re.S)
            if marked:
                return marked.group(1)
        raise AssertionError('no answer from the shell: ' + repr(seen[-500:]))


def bash(environment, files):
    setup = ["PS1='$ '", 'bind "set bell-style none"', 'bind "set enable-bracketed-paste off"',
             r"""bind -x '"\C-x\C-r": printf "<<%s>>" "$READLINE_LINE"'"""]
    setup += ['source ' + shlex.quote(file) for file in files]
    return Terminal(['bash', '--norc', '--noprofile', '-i'], environment, setup, '\x01\x0b', '\x1b*')


def zsh(environment, folder):
    setup = ["PS1='$ '; unsetopt beep", "fpath=(%s $fpath); autoload -Uz compinit; compinit -u -D" % shlex.quote(folder),
             'bindkey -e; setopt no_list_beep; zmodload zsh/complist',
             "show-line() { printf '<<%s>>' $BUFFER }; zle -N show-line; bindkey '^X^R' show-line",
             "zle -C all-matches complete-word _generic; bindkey '^X*' all-matches",
             "zstyle ':completion:all-matches::::' completer _all_matches _complete",
             "zstyle ':completion:all-matches:*' insert true; zstyle ':completion:*' insert-tab false"]
    return Terminal(['zsh', '-f', '-i'], environment, setup, '\x01\x0b', '\x18*')


class Fish:
    def __init__(self, environment, files):
        self._environment = environment
        self._files = files

    def close(self):
        pass

    def offers(self, line):
        run = self._fish('for file in $argv[2..-1]; source $file; end; complete -C $argv[1]', line, *self._files)
        assert run.stderr == '', run.stderr
        word = line[line.rfind(' ') + 1:]
        head = word[:max(word.rfind(c) for c in ':=') + 1]
        return {offer.split('\t')[0].removeprefix(head) for offer in run.stdout.splitlines()}

    def line_after(self, keys):
        """Returns the line after typing the keys. At each tab, fish must have exactly one suggestion."""
        script = 'for file in $argv[2..-1]; source $file; end; complete --escape -C $argv[1]'
        line = ''
        for part in re.split('(\t)', keys):
            if part != '\t':
                line += part
                continue
            # A suggestion of fish replaces the whole word.
            offers = self._fish(script, line, *self._files).stdout.splitlines()
            assert len(offers) == 1, (line, offers)
            line = line[:self._start_of_word(line)] + offers[0].split('\t')[0]
        return line

    def run(self, keys):
        self._fish(self.line_after(keys))

    @staticmethod
    def _start_of_word(line):
        """Returns the position after the last blank that is not quoted."""
        start, quote, escaped = 0, '', False
        for i, c in enumerate(line):
            if escaped:
                escaped = False
            elif c == '\\' and quote != "'":
                escaped = True
            elif quote:
                quote = '' if c == quote else quote
            elif c in '\'"':
                quote = c
            elif c == ' ':
                start = i + 1
        return start

    def _fish(self, script, *arguments):
        return subprocess.run(['fish', '--no-config', '-c', script, *arguments], env=self._environment,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
