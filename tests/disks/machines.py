"""Where the host runs on the disk: `start` returns a connection to it, `cut` ends all at once, `end` waits and cleans up."""
import os
import signal
import socket
import subprocess

WAIT = 120


def arguments(host, storage, folder):
    return [str(host), "--storage", f"{storage}/settings.db", "--socket", f"{folder}/settings.sock",
            "--device-socket", f"{folder}/device.sock", "--no-web", "--log-level", "3"]


class Failed(Exception):
    """The host or its file system did not do what it must."""


class ThisMachine:
    """A loop device and ext4 of the running kernel."""

    def __init__(self, host, folder, preload):
        self.place = folder / "mounted"
        self.place.mkdir()
        self.folder, self.log_file = folder, folder / "log"
        self.command = arguments(host, self.place, folder)
        self.environment = dict(os.environ, **({"LD_PRELOAD": str(preload)} if preload else {}))
        self.host = None

    def start(self, disk):
        with open(self.log_file, "w") as log:
            if subprocess.run(["mount", "-t", "ext4", "-o", "loop", disk.path, self.place], stderr=log).returncode != 0:
                raise Failed("not mounted: " + self.log_file.read_text())
            self.host = subprocess.Popen(self.command, env=self.environment, stdout=subprocess.PIPE, stderr=log)
        if not self.host.stdout.readline():
            raise Failed("the host did not start: " + self.log())
        connection = socket.socket(socket.AF_UNIX)
        connection.settimeout(WAIT)
        connection.connect(f"{self.folder}/settings.sock")
        return connection

    def cut(self):
        if self.host:
            self.host.kill()

    def end(self):
        if self.host:
            self.host.kill()
            self.host.communicate()
            self.host = None
        if os.path.ismount(self.place):
            subprocess.run(["umount", self.place], check=True)

    def log(self):
        """What is wrong, as the host says."""
        return self.log_file.read_text()


INIT = """#!/bin/sh
export PATH=/bin:/usr/bin:/sbin:/usr/sbin
mount -t proc none /proc
mount -t tmpfs -o mode=755 none /run
mkdir /run/disk /run/outside
for module in crypto/crc32_generic fs/f2fs/f2fs drivers/block/loop; do busybox insmod /usr/lib/uml/modules/*/kernel/$module.ko; done
mount -t hostfs -o {folder} none /run/outside
mount -t f2fs -o loop /run/outside/disk /run/disk || busybox poweroff -f
({environment} {host} > /run/ready; busybox poweroff -f) &
exec 3<> /dev/ttyS0
stty raw -echo <&3
echo ready >&3
socat UNIX-CONNECT:/run/settings.sock,retry=1000,interval=0.05 FD:3
busybox poweroff -f
"""


class UserModeLinux:
    """f2fs of a kernel that runs as a process; a serial line leads to the settings socket."""

    def __init__(self, host, folder, preload):
        self.log_file, self.init, self.kernel = folder / "log", folder / "init", None
        self.init.write_text(INIT.format(host=" ".join(arguments(host, "/run/disk", "/run")), folder=folder,
                                         environment=f"LD_PRELOAD={preload}" if preload else ""))
        self.init.chmod(0o755)

    def start(self, disk):
        ours, line = socket.socketpair()
        ours.settimeout(WAIT)
        with open(self.log_file, "w") as log:  # the kernel's own output is of no use
            self.kernel = subprocess.Popen(
                ["linux.uml", "mem=128M", "root=/dev/root", "rootfstype=hostfs", "rootflags=/", "ro", f"init={self.init}",
                 "con=null", f"con0=null,fd:{log.fileno()}", "ssl=null", f"ssl0=fd:{line.fileno()}", "quiet"],
                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                pass_fds=[line.fileno(), log.fileno()], start_new_session=True)
        line.close()
        if ours.recv(6, socket.MSG_WAITALL) != b"ready\n":
            raise Failed("the kernel did not start the host")
        return ours

    def cut(self):
        if self.kernel:
            os.killpg(self.kernel.pid, signal.SIGKILL)

    def end(self):
        if self.kernel:
            self.cut()
            self.kernel.wait()
            self.kernel = None

    def log(self):
        return self.log_file.read_text(errors="replace")
