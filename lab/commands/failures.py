# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Why a command is not carried out."""


class Refused(Exception):
    """The command cannot be carried out. The message says why."""

    status = 2


class Unable(Refused):
    """This machine, or this user, can have no lab."""

    status = 3


class UsageError(Exception):
    """The command line is wrong. The message says why, unless the usage says enough."""
