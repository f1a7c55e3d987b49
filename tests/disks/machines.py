"""Where the host runs on the disk. `start` returns a connection to it, `cut` ends everything at once."""
import os
import signal
import socket
import subprocess

WAIT = 120


class Failed(Exception):
    """The host or its file system did not do what it must."""


class Machine:
    def __init__(self, folder):
        self.folder, self.process = folder, None

    def launch(self, command, **options):
        self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL, start_new_session=True, **options)

    def cut(self):
        if self.process:
            os.killpg(self.process.pid, signal.SIGKILL)

    def end(self):
        if self.process:
            self.cut()
            self.process.wait()
            self.process = None

    def log(self):
        return (self.folder / "log").read_text(errors="replace")


def command_of(host, preload, storage, folder):
    return ["env", f"LD_PRELOAD={preload}", str(host), "--storage", f"{storage}/settings.db", "--socket", f"{folder}/settings.sock",
            "--device-socket", f"{folder}/device.sock", "--no-web", "--log-level", "3"]


class ThisMachine(Machine):
    """A loop device and ext4 of the running kernel."""

    def __init__(self, host, preload, folder):
        super().__init__(folder)
        self.place = folder / "mounted"
        self.place.mkdir()
        self.command = command_of(host, preload, self.place, folder)

    def start(self, disk):
        with open(self.folder / "log", "w") as log:
            if subprocess.run(["mount", "-t", "ext4", "-o", "loop", disk.path, self.place], stderr=log).returncode != 0:
                raise Failed("not mounted")
            self.launch(self.command, stdout=subprocess.PIPE, stderr=log)
        with self.process.stdout as output:
            if not output.readline():
                raise Failed("the host did not start")
        connection = socket.socket(socket.AF_UNIX)
        connection.settimeout(WAIT)
        connection.connect(f"{self.folder}/settings.sock")
        return connection

    def end(self):
        super().end()
        if os.path.ismount(self.place):
            subprocess.run(["umount", self.place], check=True)


INIT = """#!/bin/sh
export PATH=/bin:/usr/bin:/sbin:/usr/sbin
mount -t proc none /proc
mount -t tmpfs -o mode=755 none /run
mkdir /run/disk /run/outside
mount -t hostfs -o {folder} none /run/outside
for module in crypto/crc32_generic fs/f2fs/f2fs drivers/block/loop; do busybox insmod /usr/lib/uml/modules/*/kernel/$module.ko; done
mount -t f2fs -o loop /run/outside/disk /run/disk || busybox poweroff -f
({host} > /run/ready; busybox poweroff -f) &
exec 3<> /dev/ttyS0
stty raw -echo <&3
echo ready >&3
socat UNIX-CONNECT:/run/settings.sock,retry=1000,interval=0.05 FD:3
busybox poweroff -f
"""


class UserModeLinux(Machine):
    """f2fs of a kernel that is a process; a serial line leads to the settings socket. The disk is behind a loop device,
    since the kernel's own disks (ubd) ignore flushes in Linux 6.1."""

    def __init__(self, host, preload, folder):
        super().__init__(folder)
        init = folder / "init"
        init.write_text(INIT.format(host=" ".join(command_of(host, preload, "/run/disk", "/run")), folder=folder))
        init.chmod(0o755)

    def start(self, disk):
        ours, line = socket.socketpair()
        ours.settimeout(WAIT)
        with open(self.folder / "log", "w") as log, line:
            self.launch(["linux.uml", "mem=128M", "root=/dev/root", "rootfstype=hostfs", "rootflags=/", "ro", "quiet",
                         f"init={self.folder}/init", "con=null", f"con0=null,fd:{log.fileno()}", "ssl=null",
                         f"ssl0=fd:{line.fileno()}"],
                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, pass_fds=[line.fileno(), log.fileno()])
        if ours.recv(6, socket.MSG_WAITALL) != b"ready\n":
            raise Failed("the kernel did not start the host")
        return ours
