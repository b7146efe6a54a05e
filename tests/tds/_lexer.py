"""Texts of the server's language, cut into tokens, and batches cut into statements."""

import functools
import re
from typing import NamedTuple

import _faults

PIECES = re.compile(r"""
    (?P<space>\s+|--[^\n]*|/\*.*?\*/)
  | (?P<text>[Nn]?'(?:[^']|'')*')
  | (?P<quoted>\[(?:[^\]]|\]\])*\]|"(?:[^"]|"")*")
  | (?P<hex>0[xX][0-9a-fA-F]*)
  | (?P<number>(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?)
  | (?P<name>(?:@@|@|\#\#|\#)?[^\W\d][\w@$\#]*)
  | (?P<mark><>|<=|>=|!=|.)
""", re.VERBOSE | re.DOTALL)

# Words that begin a statement wherever they stand outside parentheses; some only in company, see begins().
STARTERS = {"ALTER", "BEGIN", "COMMIT", "CREATE", "DECLARE", "DELETE", "DROP", "EXEC", "EXECUTE", "IF",
            "INSERT", "PRINT", "RAISERROR", "ROLLBACK", "SAVE", "SELECT", "SET", "THROW", "TRUNCATE",
            "UPDATE", "USE", "END", "ELSE"}


class Token(NamedTuple):
    kind: str
    text: str
    at: int  # Where it begins in the batch.

    @property
    def word(self):
        """The word in capitals; empty for what is no word, quoted names among them."""
        return self.text.upper() if self.kind == "name" else ""

    @property
    def name(self):
        """The name without its quotes."""
        if self.kind != "quoted":
            return self.text
        closing = self.text[-1]
        return self.text[1:-1].replace(closing * 2, closing)

    @property
    def value(self):
        """What a text literal stands for."""
        return self.text[self.text.index("'") + 1:-1].replace("''", "'")


def tokens_of(text):
    found = [Token(match.lastgroup, match[0], match.start()) for match in PIECES.finditer(text)]
    for token in found:
        if token.kind == "mark" and token.text in "'\"":
            raise _faults.unclosed_quote(text[token.at + 1:])
    return [token for token in found if token.kind != "space"]


def closing(tokens, opening):
    """The index of the parenthesis that closes the one at `opening`."""
    depth = 0
    for index in range(opening, len(tokens)):
        depth += {"(": 1, ")": -1}.get(tokens[index].text, 0)
        if depth == 0:
            return index
    raise _faults.syntax(tokens[opening].text)


def split(tokens, separator=","):
    """The tokens between separators that stand outside parentheses."""
    parts, depth = [[]], 0
    for token in tokens:
        depth += {"(": 1, ")": -1}.get(token.text, 0)
        if token.text == separator and depth == 0:
            parts.append([])
        else:
            parts[-1].append(token)
    return parts if parts != [[]] else []


def begins(word, first, before, seen):
    """Whether a word begins a new statement after one that began with `first`.

    `before` is the word next to it, `seen` those of the statement so far that are outside parentheses.
    """
    if word not in STARTERS:
        return False
    if word == "SET":
        return first != "UPDATE" or "SET" in seen
    if word == "SELECT":
        if before in ("UNION", "ALL", "EXCEPT", "INTERSECT"):
            return False
        return first != "INSERT" or "VALUES" in seen or "SELECT" in seen
    if word == "IF":
        return not (first == "DROP" and len(seen) == 2)
    if word in ("DELETE", "UPDATE"):
        return before != "ON"
    return True


class BatchParser:
    """A batch as a list of statements: token lists, ("if", condition, then, else), ("block", statements)."""

    def __init__(self, tokens):
        self.tokens = tokens
        self.at = 0

    def word(self, ahead=0):
        return self.tokens[self.at + ahead].word if self.at + ahead < len(self.tokens) else ""

    def statements(self, until=None):
        found = []
        while self.at < len(self.tokens):
            if self.tokens[self.at].text == ";":
                self.at += 1
            elif until and self.word() == until:
                break
            else:
                found.append(self.statement())
        return found

    def statement(self):
        if self.word() == "IF":
            self.at += 1
            condition = self.simple("IF")
            then = self.statement()
            if self.at < len(self.tokens) and self.tokens[self.at].text == ";" and self.word(1) == "ELSE":
                self.at += 1
            if self.word() != "ELSE":
                return ("if", condition, then, None)
            self.at += 1
            return ("if", condition, then, self.statement())
        if self.word() == "BEGIN" and self.word(1) not in ("TRAN", "TRANSACTION"):
            self.at += 1
            inside = self.statements("END")
            if self.word() != "END":
                raise _faults.syntax("BEGIN")
            self.at += 1
            return ("block", inside)
        if self.at >= len(self.tokens) or self.word() in ("END", "ELSE"):
            raise _faults.syntax(self.tokens[min(self.at, len(self.tokens) - 1)].text)
        return self.simple(self.word())

    def simple(self, first):
        """The tokens up to the end of a statement, or of the condition of an IF."""
        start, depth, cases, seen = self.at, 0, 0, []
        while self.at < len(self.tokens):
            token = self.tokens[self.at]
            depth += {"(": 1, ")": -1}.get(token.text, 0)
            if depth == 0 and (self.at > start or first == "IF"):
                if token.text == ";":
                    break
                cases += token.word == "CASE"
                if cases and token.word in ("END", "ELSE"):
                    cases -= token.word == "END"
                elif begins(token.word, first, seen[-1] if seen else "", seen):
                    break
            if depth == 0:
                seen.append(token.word)
            self.at += 1
        if self.at == start:
            raise _faults.syntax(first)
        return self.tokens[start:self.at]


@functools.lru_cache(maxsize=512)
def statements_of(text):
    tokens = tokens_of(text)
    if [token.word for token in tokens[:2]] == ["CREATE", "TRIGGER"]:
        return [tokens]  # All that follows belongs to it.
    return BatchParser(tokens).statements()
