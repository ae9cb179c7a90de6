"""Tests nodal top in a terminal of tmux. The tests send keys and compare the screen.

    terminal_test.py NODAL SNAPSHOT HISTORY
"""

import os
import shlex
import signal
import subprocess
import sys
import tempfile
import time
import unittest

NODAL, SNAPSHOT, HISTORY = (os.path.abspath(path) for path in sys.argv[1:4])
SIZES = [(80, 24), (200, 60)]
SECONDS = 20


class Terminal:
    """A terminal that runs a command, on a tmux server of its own."""

    def __init__(self, folder, command, width=80, height=24, term='screen-256color', **environment):
        self.socket = tempfile.mktemp(dir=folder)
        environment = {'PATH': os.environ['PATH'], 'HOME': folder, 'LC_ALL': 'C.UTF-8', **environment}
        shell = f'{command}; echo "status $?"; exec sleep 100'
        self.tmux('-f', '/dev/null', 'start-server', ';', 'set-option', '-g', 'default-terminal', term, ';', 'new-session',
                  '-d', '-x', str(width), '-y', str(height), 'sh', '-c', shell, environment=environment)

    def tmux(self, *words, environment=None):
        return subprocess.run(['tmux', '-u', '-S', self.socket, *words], env=environment, check=True,
                              capture_output=True, text=True).stdout

    def screen(self, *options):
        return self.tmux('capture-pane', '-p', *options).splitlines()

    def press(self, *keys):
        self.tmux('send-keys', *keys)

    def type(self, text):
        self.tmux('send-keys', '-l', text)

    def resize(self, width, height):
        self.tmux('resize-window', '-x', str(width), '-y', str(height))

    def wait_for(self, text):
        """Waits until the screen has the text and rests, and returns the lines. A terminal shows a screen in parts while
        it is painted."""
        end = time.monotonic() + SECONDS
        before = None
        while time.monotonic() < end:
            lines = self.screen()
            if lines == before and any(text in line for line in lines):
                return lines
            before = lines
            time.sleep(0.05)
        raise AssertionError(f'no {text!r} on the screen:\n' + '\n'.join(self.screen()))

    def child(self):
        """The process of nodal."""
        pane = self.tmux('display-message', '-p', '#{pane_pid}').strip()
        return int(subprocess.run(['pgrep', '-P', pane], check=True, capture_output=True, text=True).stdout.split()[0])

    def settings(self):
        pane = self.tmux('display-message', '-p', '#{pane_tty}').strip()
        return subprocess.run(['stty', '-F', pane, '-a'], check=True, capture_output=True, text=True).stdout

    def close(self):
        subprocess.run(['tmux', '-S', self.socket, 'kill-server'], capture_output=True, check=False)


class TopTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def top(self, *words, source=SNAPSHOT, **options):
        cache = ['--cache', source] if source else []
        terminal = Terminal(self.folder.name, shlex.join([NODAL, *cache, 'top', *words]), **options)
        self.addCleanup(terminal.close)
        return terminal

    def test_every_screen(self):
        expected = [('1', '[1 groups]', 'web-01'), ('2', '[2 machines]', 'mail-01'), ('3', '[3 host]', 'memState'),
                    ('4', '[4 nodes]', 'memmap-00-lo'), ('5', '[5 heaps]', 'storage')]
        for width, height in SIZES:
            with self.subTest(size=f'{width}x{height}'):
                terminal = self.top(width=width, height=height)
                for key, tab, row in expected:
                    terminal.press(key)
                    lines = terminal.wait_for(tab)
                    self.assertEqual(len(lines), height)
                    self.assertTrue(any(row in line for line in lines), lines)
                    self.assertIn('two-vms  2026-03-14T09:26:53Z  snapshot', lines[0])
                    self.assertIn('? help', lines[-1])
                terminal.close()

    def test_the_tree(self):
        terminal = self.top()
        lines = terminal.wait_for('sum: 18 groups')
        self.assertTrue(any('web-01' in line for line in lines), lines)
        self.assertIn('- host', lines[4])
        self.assertIn('  - machines', lines[5])
        terminal.press('Down', '-')
        lines = terminal.wait_for('+ machines')
        self.assertFalse(any('web-01' in line for line in lines))
        terminal.press('Enter')
        terminal.wait_for('below machines')
        terminal.press('BSpace')
        terminal.wait_for('sum: 18 groups')
        terminal.press('t')
        self.assertIn('host', terminal.wait_for('flat')[4])

    def test_a_filter(self):
        terminal = self.top()
        terminal.wait_for('web-01')
        terminal.press('/')
        terminal.type('vmm')
        terminal.wait_for('sum: 2 of 18')
        terminal.press('Enter')
        terminal.wait_for('? help')
        terminal.press('Escape')
        terminal.wait_for('sum: 18 groups')

    def test_columns_and_sorting(self):
        terminal = self.top('--columns', 'consumed')
        terminal.wait_for('consumedv')
        terminal.press('c')
        terminal.wait_for('[x] consumed')
        terminal.press('Space', 'Enter')
        terminal.wait_for('gid')
        terminal.press('<')
        terminal.wait_for('gidv')
        terminal.press('r')
        terminal.wait_for('gid^')
        terminal.press('s', 'Home', 'Enter')
        terminal.wait_for('name^')

    def test_a_history(self):
        terminal = self.top(source=HISTORY + '@2026-03-14T03:12:00Z')
        lines = terminal.wait_for('2026-03-14T03:12:00Z')
        self.assertIn('22.0G', next(line for line in lines if 'shell' in line))
        terminal.press('Left')
        terminal.wait_for('2026-03-14T03:11:00Z')
        terminal.press('Right', 'Right')
        terminal.wait_for('2026-03-14T03:13:00Z')
        terminal.press('Space')
        terminal.wait_for('[playing]')
        terminal.wait_for('2026-03-14T03:14:00Z')
        terminal.press('Space')
        terminal.wait_for('[stopped]')

    def test_the_running_host(self):
        terminal = self.top('--every', '0.1', source=None)
        first = terminal.wait_for('live, every 0.1 s')[0]
        end = time.monotonic() + SECONDS
        while terminal.screen()[0] == first:
            self.assertLess(time.monotonic(), end)
            time.sleep(0.1)
        terminal.press('Space')
        terminal.wait_for('[stopped]')
        stopped = terminal.screen()[0]
        time.sleep(1.5)
        self.assertEqual(terminal.screen()[0], stopped)

    def test_another_size(self):
        terminal = self.top()
        terminal.wait_for('web-01')
        for width, height in [(200, 60), (40, 10), (80, 24)]:
            terminal.resize(width, height)
            end = time.monotonic() + SECONDS
            while True:
                lines = terminal.screen()
                if len(lines) == height and 'nodal top' in lines[0] and '? help' in lines[-1]:
                    break
                self.assertLess(time.monotonic(), end, '\n'.join(lines))
                time.sleep(0.05)
        self.assertIn('sum: 18 groups', lines[-2])

    def test_the_end_restores_the_terminal(self):
        for end in ('q', signal.SIGTERM, signal.SIGINT):
            with self.subTest(end=end):
                terminal = self.top()
                terminal.wait_for('web-01')
                self.assertIn('-echo ', terminal.settings())
                if end == 'q':
                    terminal.press('w', 'q')
                else:
                    os.kill(terminal.child(), end)
                lines = terminal.wait_for('status 0')
                self.assertFalse(any('web-01' in line for line in lines))
                self.assertIn(' echo ', terminal.settings())
                if end == 'q':
                    self.assertTrue(any(line.startswith('nodal --cache') for line in lines), lines)
                terminal.close()

    def test_with_and_without_colours(self):
        green = '\x1b[42m'
        for term, environment, has_colours in [('screen-256color', {}, True), ('screen-256color', {'NO_COLOR': '1'}, False),
                                               ('vt100', {}, False)]:
            with self.subTest(term=term, environment=environment):
                terminal = self.top(term=term, **environment)
                terminal.wait_for('web-01')
                text = '\n'.join(terminal.screen('-e'))
                self.assertEqual(green in text, has_colours)
                # The cursor's row is in reverse video, with and without colours.
                self.assertRegex(text, '\x1b\\[([0-9]*;)*7m')
                terminal.close()

    def test_without_utf8(self):
        terminal = self.top('--columns', 'consumed', LC_ALL='C')
        terminal.wait_for('sum: 18 groups')

    def test_an_unknown_terminal(self):
        terminal = Terminal(self.folder.name, f'TERM=unknown-terminal {shlex.quote(NODAL)} top')
        self.addCleanup(terminal.close)
        lines = terminal.wait_for('status 1')
        self.assertTrue(any('TERM=unknown-terminal: unknown terminal type' in line for line in lines), lines)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])
