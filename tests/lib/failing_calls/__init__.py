# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Whole runs of the program in which one system call fails, and a verdict on their end.

A run may deliver the report or fail to, but it has to end, to leave nothing behind, and to tell the truth: what it
hands out as the report is the whole report, and where there is none, a line or a status says so.
"""
