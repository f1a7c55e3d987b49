"""Where the host runs on the disk: `start` returns its socket, `cut` ends all at once, `end` waits and cleans up."""
import gzip
import os
import re
import subprocess
import time
from pathlib import Path

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
        return self.folder / "settings.sock"

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


def needed_modules(folder, names):
    """The files of kernel modules and of what they depend on, in the order of loading."""
    files = {path.name[:-3].replace("-", "_"): path for path in folder.rglob("*.ko")}
    found = {}

    def add(name):
        path = files.get(name.replace("-", "_"))  # None: built in
        if path and path not in found:
            for other in re.search(rb"\0depends=([^\0]*)", path.read_bytes()).group(1).decode().split(","):
                add(other)
            found[path] = True

    for name in names:
        add(name)
    return list(found)


def libraries_of(program):
    return re.findall(r"(/\S+) \(0x", subprocess.run(["ldd", program], check=True, text=True, stdout=subprocess.PIPE).stdout)


INIT = """#!/bin/busybox sh
/bin/busybox --install /bin
mount -t proc none /proc; mount -t sysfs none /sys; mount -t devtmpfs none /dev
ip link set lo up
for module in $(cat /modules/order); do insmod /modules/$module || echo "init: no $module"; done
mount -t {file_system} /dev/vda /disk || {{ echo "init: not mounted"; dmesg | tail; poweroff -f; }}
{environment} {host} 2>&1 > /ready | sed 's/^/host: /' &
for port in /sys/class/virtio-ports/*; do device=/dev/${{port##*/}}; done
socat UNIX-CONNECT:/run/settings.sock,retry=1000,interval=0.05 $device
echo "init: end"; sleep 1; poweroff -f
"""


class VirtualMachine:
    """A kernel of Debian in a virtual machine; the settings socket comes out of it through a serial port."""

    def __init__(self, host, folder, preload, chosen):
        self.folder, self.log_file, self.machine = folder, folder / "console", None
        self.accelerator = chosen.accel
        self.kernel = sorted(Path(chosen.kernel, "boot").glob("vmlinuz-*"))[-1]
        modules = needed_modules(Path(chosen.kernel, "lib/modules", self.kernel.name[len("vmlinuz-"):]),
                                 ["virtio_pci", "virtio_blk", "virtio_console", "crc32_generic", "crc32c_generic", chosen.file_system])
        root = folder / "root"
        for name in ("bin", "modules", "proc", "sys", "dev", "disk", "run", "tmp"):
            (root / name).mkdir(parents=True)
        programs = {Path(host), Path("/usr/bin/socat"), Path("/bin/busybox"), *([preload] if preload else [])}
        for source in programs | {Path(library) for program in programs - {Path("/bin/busybox")} for library in libraries_of(program)}:
            copy = Path(f"{root}{source}")
            copy.parent.mkdir(parents=True, exist_ok=True)
            copy.write_bytes(source.read_bytes())
            copy.chmod(0o755)
        for module in modules:
            (root / "modules" / module.name).write_bytes(module.read_bytes())
        (root / "modules/order").write_text("".join(f"{module.name}\n" for module in modules))
        (root / "init").write_text(INIT.format(file_system=chosen.file_system, host=" ".join(arguments(host, "/disk", "/run")),
                                               environment=f"LD_PRELOAD={preload}" if preload else ""))
        (root / "init").chmod(0o755)
        archive = subprocess.run("find . | busybox cpio -o -H newc", shell=True, cwd=root, check=True, capture_output=True)
        (folder / "initramfs").write_bytes(gzip.compress(archive.stdout, 1))

    def start(self, disk):
        self.machine = subprocess.Popen(
            ["qemu-system-x86_64", "-accel", self.accelerator, "-m", "256", "-nodefaults", "-display", "none", "-no-reboot",
             "-kernel", self.kernel, "-initrd", self.folder / "initramfs", "-append", "console=ttyS0 panic=-1 loglevel=5",
             "-serial", f"file:{self.log_file}", "-drive", f"file={disk.path},format=raw,if=virtio,cache=none",
             "-chardev", f"socket,id=settings,path={self.folder}/settings.sock,server=on,wait=off",
             "-device", "virtio-serial-pci", "-device", "virtserialport,chardev=settings"],
            stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        until = time.monotonic() + WAIT
        while not (self.folder / "settings.sock").exists():
            if self.machine.poll() is not None or time.monotonic() > until:
                raise Failed("the virtual machine did not start")
            time.sleep(0.01)
        return self.folder / "settings.sock"

    def cut(self):
        if self.machine:
            self.machine.kill()

    def end(self):
        if self.machine:
            self.machine.kill()
            self.machine.wait()
            self.machine = None
        (self.folder / "settings.sock").unlink(missing_ok=True)

    def log(self):
        return "".join(re.findall(r"^(?:host|init): .*\n", self.log_file.read_text(errors="replace"), re.MULTILINE))
