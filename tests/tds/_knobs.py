"""Faults that tests ask for: statements that fail, are late, or lose their connection."""

import dataclasses
import threading


@dataclasses.dataclass
class Rule:
    """What happens to statements whose text contains the given one, without regard to case.

    The first `after` such statements pass, the next `times` are hit, and then the rule is spent.
    """

    action: str  # "fail", "delay", "drop" (before the statement runs) or "drop_late" (it ran, unanswered).
    containing: str = ""
    after: int = 0
    times: int = 1
    number: int = 0        # Of the error, for "fail".
    text: str | None = None
    milliseconds: int = 0  # For "delay".


class Knobs:
    """The rules of a server, for the statements of all its sessions."""

    def __init__(self):
        self.rules = []
        self.lock = threading.Lock()

    def add(self, action, **details):
        with self.lock:
            self.rules.append(Rule(action, **details))

    def clear(self):
        with self.lock:
            self.rules.clear()

    def hits(self, text):
        """The rules that hit this statement; they count it."""
        hitting = []
        with self.lock:
            for rule in self.rules:
                if rule.containing.lower() not in text.lower():
                    continue
                if rule.after > 0:
                    rule.after -= 1
                elif rule.times > 0:
                    rule.times -= 1
                    hitting.append(rule)
            self.rules = [rule for rule in self.rules if rule.times > 0]
        return hitting
