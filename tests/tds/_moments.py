"""Dates with a time of day, as a count of 100 nanoseconds since the first day of year 1, and as texts.

The database keeps them as texts, `YYYY-MM-DDTHH:MM:SS` with a fraction only where there is one.
"""

import datetime
import re

SECOND = 10_000_000
DAY = 86_400 * SECOND
EPOCH = datetime.date(1900, 1, 1).toordinal() - 1
# DATETIME knows nothing before the Gregorian calendar of its makers, and counts in 300ths of a second.
FIRST_DATETIME = (datetime.date(1753, 1, 1).toordinal() - 1) * DAY

TEXT = re.compile(r"\s*(\d{4})(?:-(\d\d?)-(\d\d?)|(\d\d)(\d\d))"
                  r"(?:[T ]\s*(\d\d?):(\d\d)(?::(\d\d)(?:\.(\d{1,7}))?)?)?\s*")


def parse(text):
    """The moment that a text names; None for a text that names none."""
    found = TEXT.fullmatch(text) if isinstance(text, str) else None
    if not found:
        return None
    year, month, day, packed_month, packed_day, hour, minute, second, fraction = found.groups()
    try:
        date = datetime.date(int(year), int(month or packed_month), int(day or packed_day))
        time = datetime.time(int(hour or 0), int(minute or 0), int(second or 0))
    except ValueError:
        return None
    seconds = (time.hour * 60 + time.minute) * 60 + time.second
    return (date.toordinal() - 1) * DAY + seconds * SECOND + int((fraction or "0").ljust(7, "0"))


def text_of(moment):
    """The text of a moment. Texts of whole seconds sort before those with a fraction, as the moments do."""
    days, rest = divmod(moment, DAY)
    seconds, fraction = divmod(rest, SECOND)
    date = datetime.date.fromordinal(days + 1)
    text = f"{date.isoformat()}T{seconds // 3600:02}:{seconds // 60 % 60:02}:{seconds % 60:02}"
    return f"{text}.{fraction:07}".rstrip("0") if fraction else text


def now():
    """The text of the machine's moment, to the millisecond."""
    return text_of(parse(datetime.datetime.now().isoformat(timespec="milliseconds")))


def ticks_of(moment):
    """(days since 1900, 300ths of a second) of a moment, rounded as DATETIME does."""
    days, rest = divmod(moment, DAY)
    ticks = (rest * 300 + SECOND // 2) // SECOND
    return days - EPOCH + ticks // (86_400 * 300), ticks % (86_400 * 300)


def from_ticks(days, ticks):
    """The moment of a DATETIME, to the millisecond that it is shown with."""
    milliseconds = (ticks * 10 + 1) // 3
    return (days + EPOCH) * DAY + milliseconds * (SECOND // 1000)
