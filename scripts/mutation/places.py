# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Finds, in the compiler's tree of a source file, the places for small changes."""

import re

from clang.cindex import CursorKind as Kind
from clang.cindex import Index, TypeKind

from mutation.cursors import NUMBERS, are_alike, condition_of, first_token, is_early, is_member
from mutation.mutant import Mutant

COMPARISONS = {"<": ("<=", ">"), "<=": ("<", ">="), ">": (">=", "<"), ">=": (">", "<="), "==": ("!=",), "!=": ("==",)}
JUNCTIONS = {"&&": ("||",), "||": ("&&",)}
SUMS = {"+": ("-",), "-": ("+",)}

FUNCTIONS = {Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR, Kind.FUNCTION_TEMPLATE}


class Finder:
    """Walks through the tree of one file."""

    def __init__(self, file, source):
        self.file = file
        self.source = source
        self.path = None
        self.function = "-"
        self.found = {}

    def find(self, path, arguments):
        """The mutants of the file, in order. Throws ValueError if it cannot be parsed."""
        index = Index.create()
        unit = index.parse(str(path), arguments)
        errors = [str(message) for message in unit.diagnostics if message.severity >= 3]
        if errors:
            raise ValueError("\n".join(errors))
        self.path = str(path)
        self.walk(unit.cursor)
        return sorted(self.found.values())

    def walk(self, cursor):
        for child in cursor.get_children():
            if child.kind != Kind.NAMESPACE and not self.is_here(child):
                continue
            if is_early(child):
                continue
            outer = self.function
            if child.kind in FUNCTIONS or child.kind == Kind.VAR_DECL and outer == "-":
                self.function = child.spelling
            self.look_at(child, cursor)
            self.walk(child)
            self.function = outer

    def is_here(self, cursor):
        start = cursor.extent.start
        return start.file is not None and start.file.name == self.path

    def look_at(self, cursor, parent):
        self.turn_operators(cursor)
        self.move_constant(cursor)
        self.negate_condition(cursor)
        if cursor.kind == Kind.COMPOUND_STMT:
            self.drop_statements(cursor, parent)
        if cursor.kind == Kind.CALL_EXPR:
            self.skip_call(cursor, parent)
            if not cursor.spelling.startswith("operator") or cursor.spelling == "operator+":
                self.swap(list(cursor.get_arguments()))
        if cursor.kind == Kind.INIT_LIST_EXPR:
            self.swap(list(cursor.get_children()))

    def add(self, kind, start, end, replacement):
        lines_start = self.source.rfind(b"\n", 0, start) + 1
        lines_end = (self.source + b"\n").find(b"\n", end)
        before = self.source[lines_start:lines_end]
        after = self.source[lines_start:start] + replacement.encode() + self.source[end:lines_end]
        line = self.source.count(b"\n", 0, start) + 1
        mutant = Mutant(self.file, start, end, replacement, kind, self.function, line, in_one_line(before),
                        in_one_line(after))
        if mutant.before != mutant.after:
            self.found.setdefault(mutant, mutant)

    def text(self, cursor):
        return self.source[cursor.extent.start.offset:cursor.extent.end.offset].decode()

    # The kinds of changes

    def turn_operators(self, cursor):
        operator = self.operator(cursor)
        if operator is None:
            return
        word, start = operator
        for kind, others in (("comparison", COMPARISONS), ("condition", JUNCTIONS)):
            for other in others.get(word, ()):
                self.add(kind, start, start + len(word), other)
        if word in SUMS and cursor.type.get_canonical().kind in NUMBERS:
            self.add("constant", start, start + len(word), SUMS[word][0])

    def operator(self, cursor):
        """What stands between two operands, also where the type overloads it, with its place."""
        if cursor.kind not in (Kind.BINARY_OPERATOR, Kind.CALL_EXPR, Kind.UNEXPOSED_EXPR):
            return None
        parts = [child for child in cursor.get_children() if child.extent.start.offset < child.extent.end.offset]
        if len(parts) < 2:
            return None
        start, end = parts[0].extent.end.offset, parts[-1].extent.start.offset
        between = self.source[start:end].decode()
        word = between.strip()
        if word in COMPARISONS or word in JUNCTIONS or word in SUMS:
            return word, start + between.index(word)
        return None

    def move_constant(self, cursor):
        start, end, text = cursor.extent.start.offset, cursor.extent.end.offset, self.text(cursor)
        if cursor.kind == Kind.CXX_BOOL_LITERAL_EXPR and text in ("true", "false"):
            self.add("constant", start, end, "false" if text == "true" else "true")
        elif cursor.kind == Kind.CHARACTER_LITERAL:
            self.add("constant", start, end, f"static_cast<decltype({text})>({text} + 1)")
        elif cursor.kind in (Kind.INTEGER_LITERAL, Kind.FLOATING_LITERAL):
            number = re.match(r"0[xX][0-9a-fA-F']+|[0-9][0-9']*", first_token(cursor))
            if number is None:
                return
            value = int(number[0].replace("'", ""), 0)
            for other in (value + 1, value - 1):
                if other >= 0:
                    self.add("constant", start, start + len(number[0]), str(other))

    def negate_condition(self, cursor):
        if cursor.kind in (Kind.IF_STMT, Kind.WHILE_STMT, Kind.DO_STMT, Kind.FOR_STMT, Kind.CONDITIONAL_OPERATOR):
            for condition in condition_of(cursor, self.source):
                self.negate(condition)
        elif cursor.kind == Kind.RETURN_STMT or cursor.kind == Kind.VAR_DECL and "bool" in cursor.type.spelling:
            for value in cursor.get_children():
                if value.kind.is_expression() and value.type.get_canonical().kind == TypeKind.BOOL:
                    self.negate(value)

    def negate(self, condition):
        start, end, text = condition.extent.start.offset, condition.extent.end.offset, self.text(condition)
        if condition.kind in (Kind.VAR_DECL, Kind.DECL_STMT):
            declared = re.match(r"[^=]*?(\w+)\s*=", text)
            if declared:
                self.add("condition", start, end, f"{text}; !{declared[1]}")
        elif text not in ("true", "false") and (self.operator(condition) or [""])[0] not in ("==", "!="):
            self.add("condition", start, end, f"!({text})")

    def drop_statements(self, block, parent):
        statements = list(block.get_children())
        is_whole = parent is not None and parent.kind in FUNCTIONS | {Kind.LAMBDA_EXPR}
        for statement in statements:
            returns = statement.kind == Kind.RETURN_STMT and any(statement.get_children())
            if statement.kind in (Kind.DECL_STMT, Kind.NULL_STMT) or is_whole and returns or is_early(statement):
                continue
            start, end = statement.extent.start.offset, statement.extent.end.offset
            kind = "call" if statement.kind == Kind.CALL_EXPR else "statement"
            self.add(kind, start, end, "" if self.source[start:end].endswith(b"}") else "static_cast<void>(0)")

    def skip_call(self, call, parent):
        called = call.referenced
        start, end, text = call.extent.start.offset, call.extent.end.offset, self.text(call)
        if called is None or called.kind not in FUNCTIONS - {Kind.CONSTRUCTOR, Kind.DESTRUCTOR}:
            return
        is_statement = parent is not None and parent.kind == Kind.COMPOUND_STMT
        if is_statement or called.spelling.startswith("operator") or called.spelling in ("move", "forward"):
            return
        if call.type.kind == TypeKind.VOID or not text.endswith(")"):
            return
        given = [argument for argument in call.get_arguments() if self.text(argument)]
        if given and are_alike(given[0].type, call.type) and not is_member(called):
            self.add("call", start, end, self.text(given[0]))
        else:
            self.add("call", start, end, f"std::decay_t<decltype({text})>()")

    def swap(self, values):
        values = [value for value in values if value is not None and self.text(value)]
        for first, second in zip(values, values[1:]):
            start, middle = first.extent.start.offset, first.extent.end.offset
            other, end = second.extent.start.offset, second.extent.end.offset
            is_designated = self.text(first).startswith(".")  # these keep the order of the declaration
            if middle <= other and not is_designated and are_alike(first.type, second.type):
                between = self.source[middle:other].decode()
                self.add("arguments", start, end, self.text(second) + between + self.text(first))


def in_one_line(text):
    return " ".join(text.decode().split())
