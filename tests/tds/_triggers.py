"""Triggers: what a server runs behind a change, within its statement.

A trigger runs once for each statement, also when no row was hit, with what it inserted or updated in the
table `inserted`, what it deleted in `deleted` (an UPDATE has no `deleted`). It runs with XACT_ABORT on, as
servers do, and what it counts and selects is told before what the statement did. INSTEAD OF is not here.
"""

import _ddl
import _faults
import _lexer
from _adapt import name_text
from _faults import Fault
from _outcomes import Changed, Counted

EVENTS = ("INSERT", "UPDATE", "DELETE")


def create(connection, tokens):
    """CREATE TRIGGER name ON table {AFTER | FOR} event [, ..] AS statements."""
    walk = _ddl.Definition(tokens)
    walk.need("CREATE", "TRIGGER")
    name = walk.name()
    walk.need("ON")
    table = walk.name()
    if not walk.skip("AFTER"):
        walk.need("FOR")
    events = []
    while walk.word() in EVENTS:
        events.append(walk.word())
        walk.at += 1
        walk.at += walk.text() == ","
    walk.need("AS")
    body = " ".join(token.text for token in walk.tokens[walk.at:])
    _lexer.statements_of(body)  # Refuses what is none.
    connection.execute("INSERT INTO tds_trigger VALUES (?, ?, ?, ?)", (name, table, ",".join(events), body))


def drop(connection, tokens):
    connection.execute("DELETE FROM tds_trigger WHERE name = ?", (tokens[-1].name,))


def bodies(connection, table, event):
    """What the triggers of a table run behind a kind of change."""
    rows = connection.execute("SELECT events, body FROM tds_trigger WHERE table_name = ?", (table,))
    return [body for events, body in rows.fetchall() if event in events.split(",")]


def fill(connection, table, event, columns, rows):
    """Makes the table that triggers look at."""
    name = "deleted" if event == "DELETE" else "inserted"
    connection.execute(f"DROP TABLE IF EXISTS temp.{name}")
    connection.execute(f"CREATE TEMP TABLE {name} AS SELECT * FROM {name_text(table)} WHERE 0")
    places = ", ".join("?" * len(columns))
    connection.executemany(f"INSERT INTO temp.{name} VALUES ({places})", rows)


def fire(engine, table, event, found, columns, rows):
    """Runs triggers; returns what they tell, and raises what ends the statement."""
    transactions = engine.transactions
    own = transactions.count == 0  # The statement has no transaction but its own.
    transactions.count += own
    kept = engine.xact_abort, engine.nocount, dict(engine.counts)
    engine.xact_abort = True
    fill(engine.connection, table, event, columns, rows)
    try:
        for body in found:
            run(engine, body, own)
            if transactions.count == 0:
                raise _faults.ended_in_trigger()
    finally:
        engine.xact_abort, engine.nocount, engine.counts = kept
        transactions.count -= own and transactions.count > 0


def run(engine, body, own):
    for outcome in engine.run_all(_lexer.statements_of(body), body, {}):
        if isinstance(outcome, Fault) and outcome.ends_batch:
            raise outcome
        silent = isinstance(outcome, Counted) and (engine.nocount or outcome.count is None)
        if not silent and not (own and isinstance(outcome, Changed)):
            engine.told_by_triggers.append(outcome)


def refuse_output(found, output):
    """A server returns no rows from a change that sets off triggers, unless they go into a table."""
    if found and output is not None and output.into is None:
        raise _faults.output_with_triggers()

