# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Questions about places in the compiler's tree."""

import re

from clang.cindex import CursorKind as Kind
from clang.cindex import TokenKind, TypeKind

NUMBERS = {TypeKind.BOOL, TypeKind.CHAR_S, TypeKind.CHAR16, TypeKind.FLOAT, TypeKind.DOUBLE, TypeKind.SCHAR,
           TypeKind.SHORT, TypeKind.INT, TypeKind.LONG, TypeKind.LONGLONG, TypeKind.UCHAR, TypeKind.USHORT,
           TypeKind.UINT, TypeKind.ULONG, TypeKind.ULONGLONG}


def is_early(cursor):
    """Whether it takes room for what comes later, which only a clock sees."""
    return cursor.kind == Kind.CALL_EXPR and cursor.spelling == "reserve"


def first_token(cursor):
    token = next(iter(cursor.get_tokens()), None)
    return token.spelling if token is not None and token.kind == TokenKind.LITERAL else ""


def condition_of(statement, source):
    """The condition of a branch or loop, in a list that is empty where there is none."""
    parts = list(statement.get_children())
    if statement.kind == Kind.DO_STMT:
        return parts[1:]
    if statement.kind == Kind.FOR_STMT:
        head = source[statement.extent.start.offset:parts[-1].extent.start.offset]
        if head.count(b";") != 2:
            return []
        first, last = (statement.extent.start.offset + at for at in (head.find(b";"), head.rfind(b";")))
        return [part for part in parts if first < part.extent.start.offset < last]
    if statement.kind == Kind.IF_STMT:
        before_body = [part for part in parts if part.kind != Kind.COMPOUND_STMT and part.kind != Kind.IF_STMT]
        return before_body[-1:]
    return parts[:1]


def is_member(function):
    return function.kind == Kind.CXX_METHOD and not function.is_static_method()


def family(of_type):
    """The types that stand for each other, roughly: whatever is too rough does not build."""
    canonical = of_type.get_canonical()
    if canonical.kind in (TypeKind.LVALUEREFERENCE, TypeKind.RVALUEREFERENCE):
        canonical = canonical.get_pointee().get_canonical()
    if canonical.kind in NUMBERS:
        return "number"
    name = re.sub(r"\bconst\b|&", "", canonical.spelling).strip()
    if re.match(r"(std::(__cxx11::)?basic_string|char ?[\[*])", name):
        return "text"
    return name


def are_alike(one, other):
    return family(one) == family(other)
