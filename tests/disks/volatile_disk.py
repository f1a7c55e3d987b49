"""A disk with a volatile write cache whose power can be cut.

The disk is a file (one file is the whole FUSE file system, without a library): the backing file of a loop device or of a
virtual machine's disk. What was written since the last flush is lost, torn and reordered by a power cut.
"""
import ctypes
import errno
import os
import random
import struct
import threading
import time

GETATTR, READ, WRITE, FSYNC, INIT = 3, 15, 16, 20, 26  # open and close need no answer but ENOSYS
WITHOUT_REPLY = {2, 36, 42}  # FORGET, INTERRUPT, BATCH_FORGET
BIG_WRITES = 1 << 5
LARGEST_WRITE = 128 * 1024
SECTOR = 512
BLOCK = 4096

libc = ctypes.CDLL(None, use_errno=True)


def check(result, what):
    if result != 0:
        raise OSError(ctypes.get_errno(), f"{what}: {os.strerror(ctypes.get_errno())}")


def hide_mounts():
    """What this process mounts is mounted for it and its children only, and gone when they end."""
    check(libc.unshare(0x20000), "unshare")  # CLONE_NEWNS
    check(libc.mount(None, b"/", None, 0x44000, None), "mount")  # MS_REC | MS_PRIVATE


class VolatileDisk:
    def __init__(self, path, content, units):
        """`path`: the file that becomes the disk. `content`: what is on it. `units`: the sizes that are written whole."""
        self.path = path
        self.units = units
        self.durable = bytearray(content)
        self.flushes = self.writes = self.unflushed = self.lost = 0
        open(path, "w").close()

    def power_on(self, operations, cut):
        """Calls `cut` at the power cut: during the write or flush with this number, from 1; 0: never."""
        self.current = bytearray(self.durable)
        self.pending = []
        self.left = operations
        self.on_cut = cut
        self.is_off = threading.Event()
        self.device = os.open("/dev/fuse", os.O_RDWR)
        check(libc.mount(b"volatile-disk", self.path.encode(), b"fuse", 0,
                         f"fd={self.device},rootmode=100600,user_id=0,group_id=0".encode()), "mount")
        self.thread = threading.Thread(target=self.serve, daemon=True)
        self.thread.start()

    def remove(self):
        """When nobody uses the disk any more. The next `power_on` shows what survived."""
        self.is_off.set()
        # A loop device lets go of its file a little later.
        while libc.umount2(self.path.encode(), 0) != 0:
            check(0 if ctypes.get_errno() == errno.EBUSY else -1, "umount")
            time.sleep(0.005)
        self.thread.join()

    def cut_when_due(self):
        """In the thread that serves: whoever waits for the disk is ended by `cut` before the disk fails."""
        self.left -= 1
        if self.left != 0:
            return
        self.on_cut()
        share, unit = random.choice((0, 0.2, 0.5, 0.8, 0.95)), random.choice(self.units)
        # The first block stays whole: ext4 with a torn superblock needs e2fsck.
        pieces = [(position + start, data[start:start + size]) for position, data in self.pending
                  for size in [unit if position >= BLOCK else BLOCK] for start in range(0, len(data), size)]
        survivors = [piece for piece in pieces if random.random() < share]
        random.shuffle(survivors)
        for offset, data in survivors:
            self.durable[offset:offset + len(data)] = data
        self.unflushed += len(pieces)
        self.lost += len(pieces) - len(survivors)
        self.is_off.set()

    def serve(self):
        # A closed device ends the file system, also after an exception.
        with os.fdopen(self.device, "rb", buffering=0):
            self.serve_requests()

    def serve_requests(self):
        while True:
            try:
                request = os.read(self.device, LARGEST_WRITE + 4096)
            except OSError as error:
                if error.errno == errno.ENODEV:  # unmounted
                    return
                if error.errno in (errno.EINTR, errno.ENOENT, errno.EAGAIN):
                    continue
                raise
            operation, unique = struct.unpack_from("=IQ", request, 4)
            if operation in WITHOUT_REPLY:
                continue
            code, reply = self.answer(operation, memoryview(request)[40:])
            try:
                os.write(self.device, struct.pack("=IiQ", 16 + len(reply), -code, unique) + reply)
            except FileNotFoundError:  # interrupted meanwhile
                pass

    def answer(self, operation, body):
        """The error and the reply."""
        if operation == INIT:
            return 0, struct.pack("=IIIIHHIIHHI28x", 7, 31, 0, BIG_WRITES, 0, 0, LARGEST_WRITE, 1, 0, 0, 0)
        if operation == GETATTR:
            size = len(self.current)
            return 0, struct.pack("=16x3Q36xII12xI4x", 1, size, size // SECTOR, 0o100600, 1, BLOCK)
        if operation not in (READ, WRITE, FSYNC):
            return errno.ENOSYS, b""
        if self.is_off.is_set():
            return errno.EIO, b""
        offset, size = struct.unpack_from("=QI", body, 8) if operation != FSYNC else (0, 0)
        if operation == READ:
            return 0, bytes(self.current[offset:offset + size])
        if operation == WRITE:
            data = bytes(body[40:40 + size])
            self.current[offset:offset + size] = data
            self.pending.append((offset, data))
            self.writes += 1
            self.cut_when_due()
            return 0, struct.pack("=II", size, 0)
        self.cut_when_due()
        if self.is_off.is_set():
            return errno.EIO, b""
        for offset, data in self.pending:
            self.durable[offset:offset + len(data)] = data
        self.pending.clear()
        self.flushes += 1
        return 0, b""
