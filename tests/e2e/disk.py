"""File systems for the data folder that an ordinary folder cannot stand for: one that is soon full, and one that
nobody may write to. They are mounted where only this process and its children see them, so they go with it."""

import ctypes
import os
import pathlib
import sys

NEW_MOUNTS, NEW_USER = 0x20000, 0x10000000
READ_ONLY, REMOUNT, BIND, RECURSIVE, PRIVATE = 0x1, 0x20, 0x1000, 0x4000, 0x40000
DETACH = 2
NOT_HERE = 77  # exit status of a test that this machine cannot run; CTest shows it as skipped

_system = ctypes.CDLL(None, use_errno=True)


def _check(result, what):
    if result:
        error = ctypes.get_errno()
        raise OSError(error, f"{what}: {os.strerror(error)}")


def _mount(source, target, kind, flags, options=None):
    arguments = (text and str(text).encode() for text in (source, target, kind))
    _check(_system.mount(*arguments, ctypes.c_ulong(flags), options and options.encode()), f"mount {target}")


def own_mounts():
    """Call it first of all, before there are threads or children. Ends the test as skipped where mounting is not
    allowed, be it as root or in a user namespace."""
    user, group, root = os.geteuid(), os.getegid(), os.geteuid() == 0
    try:
        _check(_system.unshare(NEW_MOUNTS if root else NEW_MOUNTS | NEW_USER), "unshare")
        if not root:
            pathlib.Path("/proc/self/setgroups").write_text("deny")
            pathlib.Path("/proc/self/uid_map").write_text(f"{user} {user} 1")
            pathlib.Path("/proc/self/gid_map").write_text(f"{group} {group} 1")
        _mount(None, "/", None, RECURSIVE | PRIVATE)
    except OSError as reason:
        print(f"SKIPPED: this machine lets nobody mount: {reason}")
        sys.exit(NOT_HERE)


def mount_small(folder, kilobytes):
    _mount("none", folder, "tmpfs", 0, f"size={kilobytes}k,mode=755")


def mount_read_only(folder):
    """From now on nothing in `folder` can be changed, by root neither."""
    _mount(folder, folder, None, BIND)
    _mount(None, folder, None, BIND | REMOUNT | READ_ONLY)


def unmount(folder):
    _check(_system.umount2(str(folder).encode(), DETACH), f"umount {folder}")
