# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Why a command is not carried out."""


class Refused(Exception):
    """The command cannot be carried out. The message says why."""

    status = 2


class Unable(Refused):
    """This machine, or whoever uses it, can have no lab."""

    status = 3


class UsageError(Exception):
    """The command line is none. The message says why, if there is more to say than the usage does."""
