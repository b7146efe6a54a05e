"""What a server says when a statement fails: its numbers and its texts."""

import dataclasses
import threading

# Each session has a thread of its own, and its messages name its database.
session = threading.local()


def database():
    return getattr(session, "database", "talvex")


@dataclasses.dataclass
class Fault(Exception):
    number: int
    text: str
    severity: int = 16
    state: int = 1
    ends_batch: bool = False      # What follows in the same batch is not run.
    ends_transaction: bool = False  # All that the transaction did is undone, and it is over.
    raised: bool = False          # By RAISERROR, which XACT_ABORT does not heed.


def ends_all(number, text, severity=16, state=1):
    """A fault that ends the batch and the transaction, whatever XACT_ABORT says."""
    return Fault(number, text, severity, state, ends_batch=True, ends_transaction=True)


def syntax(near):
    return Fault(102, f"Incorrect syntax near '{near}'.", 15, ends_batch=True)


def unclosed_quote(text):
    return Fault(105, f"Unclosed quotation mark after the character string '{text}'.", 15, ends_batch=True)


def unknown_function(name):
    return Fault(195, f"'{name}' is not a recognized built-in function name.", 15, state=10, ends_batch=True)


def unknown_column(name):
    return Fault(207, f"Invalid column name '{name}'.", ends_batch=True)


def unknown_table(name):
    return Fault(208, f"Invalid object name '{name}'.", ends_batch=True)


def unknown_procedure(name):
    return Fault(2812, f"Could not find stored procedure '{name}'.", state=62)


def undeclared(name):
    return Fault(137, f'Must declare the scalar variable "{name}".', 15, state=2, ends_batch=True)


def exists_already(name):
    return Fault(2714, f"There is already an object named '{name}' in the database.", state=6,
                 ends_batch=True)


def null_refused(table, column, verb):
    text = (f"Cannot insert the value NULL into column '{column}', table '{database()}.dbo.{table}'; "
            f"column does not allow nulls. {verb} fails.")
    return Fault(515, text, state=2)


def duplicate_key(kind, name, table):
    text = f"Violation of {kind} constraint '{name}'. Cannot insert duplicate key in object 'dbo.{table}'."
    return Fault(2627, text, 14)


def duplicate_in_index(name, table):
    text = f"Cannot insert duplicate key row in object 'dbo.{table}' with unique index '{name}'."
    return Fault(2601, text, 14)


def conflict(verb, kind, name, table, column=None):
    place = f'table "dbo.{table}"' + (f", column '{column}'" if column else "")
    return Fault(547, f'The {verb} statement conflicted with the {kind} constraint "{name}". '
                      f'The conflict occurred in database "{database()}", {place}.', state=0)


def too_long():
    return Fault(8152, "String or binary data would be truncated.", state=30)


def not_convertible(source, target):
    return ends_all(8114, f"Error converting data type {source} to {target}.", state=5)


def not_a_number(value):
    return ends_all(245, f"Conversion failed when converting the nvarchar value '{value}' to data type int.")


def overflow(target):
    return Fault(8115, f"Arithmetic overflow error converting expression to data type {target}.", state=2)


def not_a_date():
    return ends_all(241, "Conversion failed when converting date and/or time from character string.")


def date_out_of_range(target):
    return ends_all(242, "The conversion of a nvarchar data type to a "
                         f"{target} data type resulted in an out-of-range value.", state=3)


def explicit_identity(table):
    return Fault(544, f"Cannot insert explicit value for identity column in table '{table}' when "
                      "IDENTITY_INSERT is set to OFF.")


def deadlock_victim(session):
    return ends_all(1205, f"Transaction (Process ID {session}) was deadlocked on lock resources with another "
                          "process and has been chosen as the deadlock victim. Rerun the transaction.",
                    13, state=51)


def no_transaction(verb):
    number = 3902 if verb == "COMMIT" else 3903
    return Fault(number, f"The {verb} TRANSACTION request has no corresponding BEGIN TRANSACTION.")


def stale_transaction():
    return Fault(3989, "New request is not allowed to start because it should come with valid transaction "
                       "descriptor.", ends_batch=True)


def unknown_handle(handle):
    return Fault(8179, f"Could not find prepared statement with handle {handle}.", state=2)


def missing_argument(procedure, name):
    return Fault(201, f"Procedure or function '{procedure}' expects parameter '{name}', which was not "
                      "supplied.", state=4)


def not_here(what):
    """A real server would know this; the one of the tests does not."""
    return Fault(50000, f"The test server does not know {what}.", ends_batch=True)


# What ends the transaction as well, of the faults that a test can ask for: values that cannot be converted, a
# snapshot that is too old, a trigger that ended the transaction, a log or a place for data that is full.
END_TRANSACTIONS = {241, 242, 245, 295, 8114, 3960, 3609, 9002, 1105}


def made(number, session, text=None):
    """A fault that a test asked for; it leaves of the transaction what a server's would."""
    if number == 1205:
        return deadlock_victim(session)
    maker = ends_all if number in END_TRANSACTIONS else Fault
    return maker(number, text or f"Fault {number}, as the test asked for.", 16)


def ended_in_trigger():
    return Fault(3609, "The transaction ended in the trigger. The batch has been aborted.", ends_batch=True)


def thrown(number, text):
    return Fault(number, text, ends_batch=True)


def raised(text, severity):
    return Fault(50000, text, severity, raised=True)


def output_with_triggers():
    return Fault(334, "The target table of the DML statement cannot have any enabled triggers if the "
                      "statement contains an OUTPUT clause without INTO clause.", ends_batch=True)


def lock_timed_out():
    return Fault(1222, "Lock request time out period exceeded.", state=51)


def no_such_object(name):
    return Fault(1088, f'Cannot find the object "{name}" because it does not exist or you do not have '
                       "permissions.", state=12, ends_batch=True)


def index_exists(name, table):
    return Fault(1913, f"The operation failed because an index or statistics with name '{name}' already "
                       f"exists on table '{table}'.", ends_batch=True)


def cannot_drop(kind, name):
    return Fault(3701, f"Cannot drop the {kind} '{name}', because it does not exist or you do not have "
                       "permission.", 11, 5, ends_batch=True)


def unknown_database(name):
    return Fault(911, f"Database '{name}' does not exist. Make sure that the name is entered correctly.",
                 ends_batch=True)


def database_exists(name):
    return Fault(1801, f"Database '{name}' already exists. Choose a different database name.", state=3)


def unknown_setting(name):
    return Fault(195, f"'{name}' is not a recognized SET option.", 15, 5, ends_batch=True)


def in_transaction(what):
    return Fault(226, f"{what} statement not allowed within multi-statement transaction.", state=5)
