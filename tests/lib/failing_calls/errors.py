# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The errors by which each system call can fail, and those that are never made to fail."""

# The errors that fit a call: a machine that has run out of something, a disk or a line that is broken, a signal.
ERRORS = {
    "EMFILE ENFILE": "dup eventfd2 epoll_create1 pidfd_open pipe pipe2 socketpair",
    "EMFILE ENFILE ENOMEM EIO EINTR": "open openat",
    "ENOBUFS EMFILE": "socket",
    "EBUSY EINTR": "dup2",
    "ENOMEM EAGAIN": "clone clone3 fork vfork execve",
    "ENOMEM": "close_range mmap mprotect mremap munmap madvise",
    "ENOMEM ENOSPC": "epoll_ctl",
    "EINTR": "epoll_pwait epoll_wait",
    "EINTR ENOMEM": "poll ppoll select pselect6",
    "EIO EINTR EAGAIN": "pread64 read readv",
    "ENOSPC EIO EINTR": "pwrite64 write writev",
    "ENOSPC EIO": "fchmod fsync fdatasync ftruncate link mkdir rename renameat2 unlink",
    "EIO ENOMEM EACCES": "access faccessat2 fstat getcwd lstat newfstatat readlink readlinkat stat statx",
    "EIO": "fcntl fstatfs getdents64 ioctl lseek statfs",
    "EPERM": "prlimit64",
    "ECHILD EINTR": "wait4",
    "ENOBUFS ECONNREFUSED EINTR": "bind connect getpeername getsockname getsockopt setsockopt",
    "ECONNRESET ENOBUFS EAGAIN EINTR": "sendmmsg sendmsg sendto",
    "ECONNRESET ENOMEM EAGAIN EINTR": "recvfrom recvmsg",
    "EAGAIN EINTR": "getrandom",
}
ERRORS_OF = {name: errors.split() for errors, names in ERRORS.items() for name in names.split()}
OTHER_ERRORS = ["EIO", "ENOMEM"]  # of a call that another library or system brings

# What is never made to fail.
NOT_FALLIBLE = {
    "a close that fails has closed all the same, which a call that is stopped could not":
        "close",
    "a refused brk gives the old end of the heap, and no error: the C library takes an error for the new end":
        "brk",
    "they do not fail with what the program gives them":
        "alarm arch_prctl clock_gettime clock_nanosleep dup3 exit exit_group getegid geteuid getgid getpid getppid"
        " getresgid getresuid gettid getuid gettimeofday kill prctl restart_syscall rseq rt_sigaction rt_sigprocmask"
        " rt_sigreturn sched_getaffinity sched_getparam sched_getscheduler sched_yield set_robust_list"
        " set_tid_address shutdown sigaltstack sysinfo tgkill umask uname",
    "the program asks about children that it has":
        "waitid",
    "the C library ends the program at once, by its own message, when one of these does":
        "futex",
}
EXEMPT = {name for names in NOT_FALLIBLE.values() for name in names.split()}

# libuv's handler of SIGCHLD takes a lock and wakes the loop by pipes of its own, and GLib wakes its loop by an eventfd. These
# have what is asked of them; where such a call failed, libuv would lose the signal, and GLib try again and again. By these
# numbers of bytes, their calls are told from the program's.
_BYTES_OF_WAKE_UPS = {"read": [1, 16, 512], "write": [1, 16]}


def is_fallible(call):
    """Whether this stopped call may be made to fail: it wakes no loop."""
    return call.arguments[2] not in _BYTES_OF_WAKE_UPS.get(call.name, [])


# What passes by definition, and whose callers try again until it has.
PASSING = ["EINTR", "EAGAIN"]
# Qt's loop asks again and again. The system refuses poll only when it has no room for the caller's list, which
# for lists of this length it never needs to look for.
NOT_FOREVER = ["poll", "ppoll"]
