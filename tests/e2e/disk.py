"""File systems for the data folder that an ordinary folder cannot stand for: one that is soon full, and one that
nobody may write to. They are mounted where only this process and its children see them, so they go with it."""

import ctypes
import os
import pathlib

NEW_MOUNTS, NEW_USER = 0x20000, 0x10000000
READ_ONLY, REMOUNT, BIND, RECURSIVE, PRIVATE = 0x1, 0x20, 0x1000, 0x4000, 0x40000
DETACH = 2

_system = ctypes.CDLL(None, use_errno=True)


def _check(result):
    if result:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


def _mount(source, target, kind, flags, options=None):
    texts = [text and str(text).encode() for text in (source, target, kind, options)]
    _check(_system.mount(*texts[:3], ctypes.c_ulong(flags), texts[3]))


def own_mounts():
    """Call it first of all, before there are threads or children. False where mounting is not allowed, be it as root
    or in a user namespace."""
    user, group, root = os.geteuid(), os.getegid(), os.geteuid() == 0
    try:
        _check(_system.unshare(NEW_MOUNTS if root else NEW_MOUNTS | NEW_USER))
        if not root:
            for name, text in (("setgroups", "deny"), ("uid_map", f"{user} {user} 1"), ("gid_map", f"{group} {group} 1")):
                pathlib.Path("/proc/self", name).write_text(text)
        _mount(None, "/", None, RECURSIVE | PRIVATE)
        return True
    except OSError:
        return False


def mount_small(folder, kilobytes):
    _mount("none", folder, "tmpfs", 0, f"size={kilobytes}k,mode=755")


def mount_read_only(folder):
    """From now on nothing in `folder` can be changed, by root neither."""
    _mount(folder, folder, None, BIND)
    _mount(None, folder, None, BIND | REMOUNT | READ_ONLY)


def unmount(folder):
    _check(_system.umount2(str(folder).encode(), DETACH))
