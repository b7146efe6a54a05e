"""Whether a text is T-SQL, in the judgement of a parser that shares no code with ours."""

import functools
import logging

from sqlfluff.core import FluffConfig, Linter

# It tells of every text with an open quote that it has a mistake of its own.
logging.getLogger("sqlfluff").setLevel(logging.CRITICAL)


@functools.cache
def linter():
    return Linter(config=FluffConfig(overrides={"dialect": "tsql"}))


def parsed(text):
    """(what is wrong with the text or None, how many statements it is)."""
    tree = linter().parse_string(text)
    if tree.violations:
        return tree.violations[0].desc(), 0
    batches = [part for part in tree.tree.segments if part.is_type("batch")] if tree.tree else []
    return None, sum(part.is_type("statement") for batch in batches for part in batch.segments)


def problem(text):
    """Why the text is not one statement; None when it is."""
    wrong, count = parsed(text)
    return wrong or (None if count == 1 else f"{count} statements")
