"""The texts that clients sent, each kind once: texts that differ only in their literals are of one kind."""

import _lexer

LITERALS = {"text": "''", "number": "0", "hex": "0x"}


class Texts:
    def __init__(self):
        self.by_outline = {}
        self.seen = set()
        self.refused = []  # What could not even be cut into statements.

    def note(self, text):
        if text in self.seen:
            return
        self.seen.add(text)
        outline = tuple(LITERALS.get(token.kind, token.text) for token in _lexer.tokens_of(text))
        self.by_outline.setdefault(outline, text)

    def note_refused(self, text):
        self.refused.append(text)

    def all(self):
        return list(self.by_outline.values())
