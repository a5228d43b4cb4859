#!/usr/bin/env python3
"""Sessions typed at a terminal, as a user meets them: wex on a
pseudo-terminal against wexd-sim and both features. Each scenario is a
list of keys to send and the exact text the terminal must show next."""
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import pexpect

BUILD = sys.argv[1]
SOURCE = sys.argv[2]
WEX = BUILD + "/shell/wex/wex"
failures = []


def wait_for(path, text):
    for _ in range(100):
        if os.path.exists(path) and text in open(path, errors="replace").read():
            return
        time.sleep(0.05)
    raise RuntimeError("no '%s' in %s" % (text, path))


class Road:
    """wexd-sim and both features, in a runtime directory of their own."""

    def __init__(self):
        self.dir = tempfile.mkdtemp(prefix="wex-pty-")
        os.environ.update(IPCQ_RUNTIME_DIR=self.dir, USER="tester", HOME=self.dir)
        shutil.copytree(BUILD + "/par", self.dir + "/par")
        self.processes = []
        self.start([BUILD + "/tools/wexd-sim", "--par-dir", self.dir + "/par"], "sim.log", "serving")
        for feature in ("zone", "interface"):
            self.start([BUILD + "/features/wex-" + feature], feature + ".log", "commands in main tree")

    def start(self, words, log, ready):
        with open(self.dir + "/" + log, "w") as out:
            self.processes.insert(0, subprocess.Popen(words, stdout=out, stderr=subprocess.STDOUT))
        wait_for(self.dir + "/" + log, ready)

    def stop(self):
        for process in self.processes:
            process.terminate()
            process.wait()
        shutil.rmtree(self.dir)


def session():
    shell = pexpect.spawn(WEX, encoding="utf-8", timeout=5, dimensions=(24, 200))
    shell.expect_exact("switch# ")
    return shell


def terminal_of(shell):
    return os.readlink("/proc/%d/fd/0" % shell.pid)


def walk(name, shell, steps):
    """Sends each step's keys and expects its text, exactly, next."""
    for keys, shown in steps:
        shell.send(keys)
        try:
            shell.expect_exact(shown)
        except (pexpect.TIMEOUT, pexpect.EOF):
            failures.append("%s: after %r expected %r, got %r" % (name, keys, shown, shell.before))
            return False
    return True


def help_completion_submode_and_pipes():
    shell = session()
    walk("help, completion, a submode and a pipe chain", shell, [
        ("?", "?\r\n"
              "  checkpoint  Saved configurations to return to\r\n"
              "  configure   Enter configuration mode\r\n"
              "  copy        Copy a configuration\r\n"
              "  exit        Leave the session\r\n"
              "  ping        Send echo requests\r\n"
              "  show        Show the switch's state\r\n"
              "  ssh         Open a secure shell\r\n"
              "  terminal    This terminal's settings\r\n"),
        ("", "switch# "),
        ("s\t", "\r\nshow  ssh\r\n"),
        ("", "switch# s"),
        ("\x03", "^C"),
        ("", "switch# "),
        ("conf\t", "igure "),
        ("t\r", "switch(config)# "),
        ("zone name Z1 vsan ?", "?\r\n  <VSAN>  VSAN id (a VSAN id from 1 to 4094)\r\n"),
        ("", "switch(config)# zone name Z1 vsan "),
        ("10 ?", "?\r\n  <cr>  The command is complete\r\n"),
        ("\r", "switch(config-zone)# "),
        ("member ?", "?\r\n  fcid       By FC ID\r\n  interface  By interface\r\n  wwn        By port WWN\r\n"),
        ("w\t", "wn "),
        ("10:00:00:00:c9:12:34:56\r", "switch(config-zone)# "),
        ("mem\t", "ber "),
        ("fcid 0x10203\r", "switch(config-zone)# "),
        ("end\r", "switch# "),
        ("show running-config | include member | count\r", "\r\n2\r\n"),
        ("", "switch# "),
        ("show running-config | begin zone | last 1\r", "\r\n  member fcid 0x010203\r\n"),
        ("", "switch# "),
        # Control bytes and invalid UTF-8 neither reach the screen nor end the session.
        ("zo\x01ne\xff\r", "% Unknown word"),
        ("show version\r", "wex "),
        ("exit\r", "\r\n"),
    ])
    shell.expect(pexpect.EOF)
    shell.close()
    if shell.exitstatus != 0:
        failures.append("exit at the exec prompt: status %s" % shell.exitstatus)


def paging_and_interrupting():
    subprocess.run([WEX, "-nRc", "conf t ; zone name P1 vsan 20 ; member fcid 0x10001 ; member fcid 0x10002 ; "
                    "member fcid 0x10003 ; member fcid 0x10004"], check=True)
    shell = session()
    walk("paging", shell, [
        ("terminal length 3\r", "switch# "),
        ("show zone vsan 20-20\r", "\r\nzone name P1 vsan 20\r\n  member fcid 0x010001\r\n--More--"),
        (" ", "  member fcid 0x010002\r\n  member fcid 0x010003\r\n--More--"),
        ("\r", "  member fcid 0x010004\r\n"),
        ("", "switch# "),
        ("show zone vsan 20-20\r", "--More--"),
        ("q", "switch# "),
        ("show zone vsan 20-20\r", "--More--"),
        ("\x03", "switch# "),
        ("terminal length 0\r", "switch# "),
        ("show zone vsan 20-20\r", "  member fcid 0x010004\r\n"),
        ("", "switch# "),
    ])
    shell.sendcontrol("d")
    shell.expect(pexpect.EOF)


def two_sessions_and_the_lock():
    first, second = session(), session()
    holder = "held by tester on %s (process %d)" % (terminal_of(first), first.pid)
    walk("the first session locks", first, [("conf t\r", "switch(config)# ")])
    walk("the second is refused", second, [
        ("conf t\r", "% Configuration mode is locked: " + holder + "\r\n"),
        ("", "switch# "),
        ("show users\r", "  USER             TERMINAL             SINCE (UTC)\r\n"),
        ("", "switch# "),
    ])
    listed = second.before
    for shell, mark in ((first, " "), (second, "*")):
        if not re.search(r"%s tester +%s +\d{4}-\d\d-\d\d \d\d:\d\d:\d\d" % (re.escape(mark), terminal_of(shell)),
                         listed):
            failures.append("show users does not list %s as %r: %r" % (terminal_of(shell), mark, listed))
    first.kill(signal.SIGKILL)  # no chance to give the lock back: wexd-sim sees the process gone
    first.wait()
    walk("the lock of a killed session", second, [("conf t\r", "switch(config)# ")])
    second.kill(signal.SIGHUP)  # a hang-up ends the session cleanly
    second.expect(pexpect.EOF)
    second.close()
    if second.exitstatus != 0:
        failures.append("after SIGHUP: status %s" % second.exitstatus)
    third = session()
    walk("the lock given back on a hang-up", third, [("conf t\r", "switch(config)# "), ("\x04", "switch# ")])
    third.sendcontrol("d")
    third.expect(pexpect.EOF)


def history_across_sessions():
    os.remove(os.environ["HOME"] + "/.wex_history")
    shell = session()
    walk("history is written", shell, [("show version\r", "switch# "), ("exit\r", "\r\n")])
    shell.expect(pexpect.EOF)
    later = session()
    walk("history is read back", later, [
        ("show history\r", "\r\n1  show version\r\n2  exit\r\n3  show history\r\n"),
        ("", "switch# "),
        ("\x1b[A", "show history"),  # the up arrow recalls it
    ])
    later.sendcontrol("c")
    later.sendcontrol("d")
    later.expect(pexpect.EOF)


def still_running(runtime):
    """Whether a process has the runtime directory in its environment."""
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open("/proc/%s/environ" % pid, "rb") as environ:
                if b"IPCQ_RUNTIME_DIR=" + runtime.encode() + b"\0" in environ.read():
                    return True
        except OSError:
            pass
    return False


def the_demo_at_a_terminal():
    """The README's first command opens a session, and stops everything when it ends."""
    demo = pexpect.spawn(SOURCE + "/scripts/demo", encoding="utf-8", timeout=15, dimensions=(24, 200),
                         env=dict(os.environ, WEX_DEMO_BUILD_DIR=BUILD))
    demo.expect(r"runtime directory (\S+)\)")
    runtime = demo.match.group(1)
    walk("the demo at a terminal", demo, [
        ("", "Try:"),
        ("", "switch# "),
        ("conf t\r", "switch(config)# "),
        ("exit\r", "switch# "),
        ("exit\r", "\r\n"),
    ])
    demo.expect(pexpect.EOF)
    demo.close()
    if demo.exitstatus != 0 or still_running(runtime):
        failures.append("the demo at a terminal: status %s, processes left: %s" % (demo.exitstatus,
                                                                                  still_running(runtime)))


road = Road()
try:
    for scenario in (help_completion_submode_and_pipes, paging_and_interrupting, two_sessions_and_the_lock,
                     history_across_sessions, the_demo_at_a_terminal):
        try:
            scenario()
        except (pexpect.TIMEOUT, pexpect.EOF, subprocess.CalledProcessError, OSError) as error:
            failures.append("%s: %s" % (scenario.__name__, error))
finally:
    road.stop()
for failure in failures:
    print(failure)
sys.exit(1 if failures else 0)
