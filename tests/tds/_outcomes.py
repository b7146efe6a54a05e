"""What statements come to."""

import dataclasses


@dataclasses.dataclass
class Rows:
    shapes: list
    rows: list
    verb: str = "SELECT"
    counted: bool = True


@dataclasses.dataclass
class Counted:
    verb: str
    count: int | None  # None for a statement that does not count.


@dataclasses.dataclass
class Told:
    """A message that is no error."""

    number: int
    text: str


@dataclasses.dataclass
class Changed:
    """A change of the session that its client must know of: a kind of _tokens, the new and the old value."""

    kind: int
    new: object
    old: object


class DroppedByTest(Exception):
    """The connection is to be lost now."""
