"""Statements of the server's language, rewritten for SQLite.

What the server does not understand is refused even where SQLite would take it: a statement that passes here
by mistake would fail in production.
"""

import functools
from typing import NamedTuple

import _faults
import _lexer
from _lexer import Token

# The functions the server has, and how they are called here.
FUNCTIONS = {
    "ABS": "abs", "AVG": "avg", "CAST": "tds_cast", "COALESCE": "coalesce",
    "COLUMNPROPERTY": "tds_column_property", "CONVERT": "tds_cast", "COUNT": "count",
    "DATABASEPROPERTYEX": "tds_database_property",
    "DATALENGTH": "tds_datalength", "DB_NAME": "tds_db_name", "GETDATE": "tds_now", "ISNULL": "ifnull",
    "LEFT": "tds_left", "LEN": "tds_len", "LOWER": "lower", "LTRIM": "ltrim", "MAX": "max", "MIN": "min",
    "NULLIF": "nullif", "OBJECT_ID": "tds_object_id",
    "REPLACE": "replace", "RIGHT": "tds_right", "ROUND": "round", "RTRIM": "rtrim",
    "SCHEMA_NAME": "tds_schema_name", "SCOPE_IDENTITY": "tds_identity", "SUBSTRING": "substr", "SUM": "sum",
    "SUSER_SNAME": "tds_user_name", "SYSDATETIME": "tds_now", "UPPER": "upper", "USER_NAME": "tds_user_name",
    "XACT_STATE": "tds_xact_state",
}
# Words that may stand before a parenthesis without being a function.
BEFORE_PARENTHESIS = set("""ALL AND ANY AS BETWEEN BY CASE DISTINCT ELSE EXCEPT EXISTS FROM HAVING IN
INTERSECT INTO IS JOIN LIKE NOT ON OR OVER SELECT SET SOME THEN TOP UNION USING VALUES WHEN WHERE
WITH""".split())
NOT_ITS_WORDS = set("AUTOINCREMENT CONFLICT GLOB LIMIT NOTNULL OFFSET PRAGMA REGEXP RETURNING".split())
AFTER_OUTPUT = ("VALUES", "SELECT", "WHERE", "FROM", "DEFAULT", "INTO")
# Words of SQLite that are plain names to the server.
PLAIN_NAMES = {"ABORT", "DEFERRABLE", "INDEXED", "NOTHING"}
NOT_ITS_COLUMNS = {"ROWID", "OID", "_ROWID_", "TRUE", "FALSE", "CURRENT_DATE", "CURRENT_TIME"}
NOT_ITS_MARKS = set("`?$:{}\\'\"")


def name_text(name):
    """A name that SQLite cannot mistake for a text."""
    return f"[{name}]" if "]" not in name else '"' + name.replace('"', '""') + '"'


@functools.lru_cache(maxsize=1024)
def adapted(tokens, parameters=(), tables=(), code_page=None):
    """The Adaptation of a tuple of tokens that may name parameters and variables that are tables, with their
    @ and in capitals. Letters that a code page lacks are lost from texts without the prefix N."""
    return Adaptation(tokens, parameters, tables, code_page)


class Adaptation:
    """The rewritten text, and the literals that it is run with."""

    def __init__(self, tokens, parameters, tables, code_page):
        self.parameters, self.tables, self.code_page = parameters, tables, code_page
        self.bound = {}
        self.changes_sequence = False
        self.tokens = limited(without_hints(tokens))
        self.text = " ".join(self.words())

    def bind(self, value):
        name = f"tds_{len(self.bound)}"
        self.bound[name] = value
        return ":" + name

    def words(self):
        words, index = [], 0
        while index < len(self.tokens):
            taken, used = self.one(index)
            words += taken
            index += used
        return words

    def peek(self, index):
        return self.tokens[index] if 0 <= index < len(self.tokens) else Token("end", "", 0)

    def one(self, index):
        """(words, how many tokens they stand for) at an index."""
        token = self.tokens[index]
        before, after = self.peek(index - 1), self.peek(index + 1)
        if token.kind == "text":
            return [name_text(token.value) if before.word == "AS" else self.bind(self.kept(token))], 1
        if token.kind == "number":
            whole = token.text.isdigit()
            return [token.text if whole else self.bind(float(token.text))], 1
        if token.kind == "hex":
            return [f"X'{token.text[2:]}'"], 1
        if token.kind == "plain":
            return [token.text], 1
        if token.kind == "mark":
            return self.mark(token, before, after), 1
        if after.text == ".":
            return self.qualified(index)
        if token.kind == "quoted":
            return [name_text(token.name)], 1
        return self.named(index, token, before, after)

    def kept(self, token):
        """What is left of a quoted text in the code page of the database."""
        if self.code_page is None or token.text[0] in "Nn":
            return token.value
        return token.value.encode(self.code_page, "replace").decode(self.code_page)

    def mark(self, token, before, after):
        pair = token.text + after.text
        touching = after.at == token.at + 1
        if token.text in NOT_ITS_MARKS or (touching and pair in ("||", "==", "<<", ">>", "->")):
            raise _faults.syntax(token.text)
        if token.text == "^":
            raise _faults.not_here("the operator ^")
        if token.text == "=" and before.kind == after.kind == "text":
            return ["COLLATE TDS_TEXT", token.text]
        if token.text == "+" and "text" in (before.kind, after.kind):
            return ["||"]
        return [token.text]

    def qualified(self, index):
        first, second = self.tokens[index].name.lower(), self.peek(index + 2)
        if first == _faults.database().lower() and (second.name.lower() == "dbo" or second.text == "."):
            return [], 3 if second.text == "." else 2
        if first == "dbo":
            return [], 2
        if first in ("sys", "information_schema"):
            return [name_text(f"{first}_{second.name.lower()}")], 3
        return [name_text(self.tokens[index].name)], 1

    def named(self, index, token, before, after):
        word = token.word
        if word.startswith("@@"):
            return [f"tds_global('{word[2:]}')"], 1
        if word in self.tables:
            return [name_text(word)], 1
        if word.startswith("@"):
            if word not in self.parameters:
                raise _faults.undeclared(token.text)
            return [":" + bound_name(word)], 1
        if word == "NEXT" and after.word == "VALUE":
            self.changes_sequence = True
            return [f"tds_next('{self.peek(index + 3).name.upper()}')"], 4
        if word in ("CAST", "CONVERT") and after.text == "(":
            return self.conversion(index)
        if word == "CURRENT_TIMESTAMP":
            return ["tds_now()"], 1
        if word in NOT_ITS_COLUMNS:
            raise _faults.unknown_column(token.text)
        if word in NOT_ITS_WORDS or (word == "OR" and before.word == "UPDATE"):
            raise _faults.syntax(token.text)
        if after.text == "(" and before.word not in ("INTO", "TABLE") and word not in BEFORE_PARENTHESIS:
            if word not in FUNCTIONS:
                raise _faults.unknown_function(token.text)
            return [FUNCTIONS[word]], 1
        if word == "ISNULL":
            raise _faults.syntax(token.text)
        return [name_text(token.text) if word in PLAIN_NAMES else token.text], 1

    def conversion(self, index):
        """CAST(value AS type) and CONVERT(type, value) as one function."""
        end = _lexer.closing(self.tokens, index + 1)
        inside = self.tokens[index + 2:end]
        if self.tokens[index].word == "CONVERT":
            parts = _lexer.split(inside)
            if len(parts) != 2:
                raise _faults.not_here("the styles of CONVERT")
            written, value = parts
        else:
            at = max((i for i, token in enumerate(inside) if token.word == "AS"), default=-1)
            if at < 1:
                raise _faults.syntax("CAST")
            value, written = inside[:at], inside[at + 1:]
        kept, self.tokens = self.tokens, value
        words = self.words()
        self.tokens = kept
        name = self.bind("".join(token.text for token in written))
        return ["tds_cast", "(", *words, ",", name, ")"], end - index + 1


def bound_name(parameter):
    return "p_" + parameter[1:].upper()


def without_hints(tokens):
    """Without WITH (NOLOCK, ..): there is one way to lock here."""
    kept, index = [], 0
    while index < len(tokens):
        after = tokens[index + 1].text if index + 1 < len(tokens) else ""
        if tokens[index].word == "WITH" and after == "(":
            index = _lexer.closing(tokens, index + 1)
        else:
            kept.append(tokens[index])
        index += 1
    return kept


def limited(tokens):
    """SELECT TOP n .. as SELECT .. LIMIT n, in inner queries as well."""
    for index in range(len(tokens) - 1, -1, -1):
        if tokens[index].word != "TOP" or index + 1 >= len(tokens):
            continue
        if tokens[index - 1].word not in ("SELECT", "DISTINCT"):
            raise _faults.not_here("TOP outside of SELECT")
        last = _lexer.closing(tokens, index + 1) if tokens[index + 1].text == "(" else index + 1
        count = tokens[index + 1:last + 1]
        depth, end = 0, last + 1
        while end < len(tokens) and depth >= 0:
            depth += {"(": 1, ")": -1}.get(tokens[end].text, 0)
            end += depth >= 0
        # The kind of its own spares the word the check for words that are not the server's.
        limit = [Token("plain", "LIMIT", tokens[index].at), *count]
        tokens = tokens[:index] + tokens[last + 1:end] + limit + tokens[end:]
    return tokens


class Output(NamedTuple):
    columns: list  # Tokens.
    into: str | None  # The variable, in capitals, whose table takes the rows.


def with_output_last(tokens):
    """(tokens without OUTPUT, an Output; None without one)."""
    depth = 0
    for start, token in enumerate(tokens):
        depth += {"(": 1, ")": -1}.get(token.text, 0)
        if depth == 0 and token.word == "OUTPUT":
            break
    else:
        return tokens, None
    end = start + 1
    while end < len(tokens) and tokens[end].word not in AFTER_OUTPUT:
        end += 1
    into, last = None, end
    if end + 1 < len(tokens) and tokens[end].word == "INTO":
        into, last = tokens[end + 1].word, end + 2
    columns = []
    for part in _lexer.split(tokens[start + 1:end]):
        wanted = "DELETED" if tokens[0].word == "DELETE" else "INSERTED"
        if len(part) != 3 or part[0].word != wanted or part[1].text != ".":
            raise _faults.not_here("this OUTPUT clause")
        columns.append(part[2])
    return tokens[:start] + tokens[last:], Output(columns, into)


def change_tokens(tokens):
    """INSERT, UPDATE and DELETE with the words that SQLite wants to see."""
    if tokens[0].word in ("INSERT", "DELETE"):
        wanted = "INTO" if tokens[0].word == "INSERT" else "FROM"
        if len(tokens) > 1 and tokens[1].word == "OR":
            raise _faults.syntax("OR")
        if len(tokens) > 1 and tokens[1].word != wanted:
            return [tokens[0], Token("name", wanted, tokens[0].at), *tokens[1:]]
    return tokens


def target_table(tokens):
    """The table that a statement changes, as change_tokens() gives it."""
    at = 1 if tokens[0].word == "UPDATE" else 2
    while at + 2 < len(tokens) and tokens[at + 1].text == ".":
        at += 2
    if at >= len(tokens):
        raise _faults.syntax(tokens[-1].text)
    return tokens[at].name, at
