"""A PostgreSQL server of a test's own: on a socket in a temporary folder, gone with the test.

The server refuses to run as the superuser of the machine, so then it runs as "postgres", or else "nobody".
"""

import os
import pathlib
import pwd
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

PORT = 5432  # Names the socket; nobody listens on the network.
# As the driver's package installs it, it leaves a log of every process in the folder for temporary files; it
# heeds this setting only where drivers are listed, not in a connection string.
DRIVERS = "[PostgreSQL Unicode]\nDriver = psqlodbcw.so\nCommLog = 0\n"


def program(name):
    """The path of one of the server's programs, which Debian keeps away from the search path."""
    newest_first = sorted(pathlib.Path("/usr/lib/postgresql").glob("*/bin"), reverse=True)
    for folder in [*newest_first, *map(pathlib.Path, os.environ["PATH"].split(":"))]:
        if (folder / name).exists():
            return str(folder / name)
    sys.exit(f"{name} is not installed: the package postgresql is missing")


def as_ordinary_user(command):
    """The command without the rights of a superuser; it ends in order when the test dies without a word."""
    change = ["setpriv", "--pdeathsig=INT"]
    if os.geteuid() == 0:
        user = ordinary_user()
        change += [f"--reuid={user.pw_uid}", f"--regid={user.pw_gid}", "--clear-groups"]
    return [*change, *command]


def ordinary_user():
    for name in ("postgres", "nobody"):
        try:
            return pwd.getpwnam(name)
        except KeyError:
            continue
    sys.exit("there is no user that PostgreSQL could run as")


class PostgreSql:
    """A running server with one superuser "talvex" who needs no password. `settings` are the server's."""

    def __init__(self, **settings):
        self.folder = tempfile.mkdtemp(prefix="talvex-pg-")
        if os.geteuid() == 0:
            os.chown(self.folder, ordinary_user().pw_uid, ordinary_user().pw_gid)
        self.settings = settings
        self.process = None
        pathlib.Path(self.folder, "odbcinst.ini").write_text(DRIVERS, encoding="ascii")
        os.environ["ODBCSYSINI"] = self.folder  # For the programs that the test starts.
        make = [program("initdb"), "-D", self.data(), "-U", "talvex", "-A", "trust", "-E", "UTF8",
                "--locale=C", "--no-sync"]
        made = subprocess.run(as_ordinary_user(make), capture_output=True, encoding="utf-8",
                              check=False, cwd=self.folder)
        if made.returncode != 0:
            shutil.rmtree(self.folder)
            sys.exit("initdb failed: " + made.stdout + made.stderr)

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        if self.process is not None:
            self.stop()
        shutil.rmtree(self.folder)

    def data(self):
        return os.path.join(self.folder, "data")

    def start(self):
        settings = {"listen_addresses": "", "unix_socket_directories": self.folder, "port": PORT,
                    **self.settings}
        options = [f"--{name}={value}" for name, value in settings.items()]
        with open(os.path.join(self.folder, "log"), "ab") as log:
            command = as_ordinary_user([program("postgres"), "-D", self.data(), *options])
            self.process = subprocess.Popen(command, cwd=self.folder, stdin=subprocess.DEVNULL, stdout=log,
                                            stderr=log)
        for _ in range(600):
            ready = subprocess.run([program("pg_isready"), "-q", "-h", self.folder], check=False)
            if ready.returncode == 0:
                return
            if self.process.poll() is not None:
                break
            time.sleep(0.1)
        sys.exit("PostgreSQL does not start: " + self.log())

    def stop(self):
        """An orderly end that waits for nobody."""
        self.process.send_signal(signal.SIGINT)
        self.process.wait(timeout=60)
        self.process = None

    def kill(self):
        """The end without any order, of the server and of all the sessions that it has started."""
        listed = pathlib.Path(f"/proc/{self.process.pid}/task/{self.process.pid}/children")
        children = listed.read_text("ascii")
        self.process.kill()
        for child in children.split():
            try:
                os.kill(int(child), signal.SIGKILL)
            except ProcessLookupError:
                pass  # Gone by itself meanwhile.
        self.process.wait(timeout=60)
        self.process = None

    def log(self):
        return pathlib.Path(self.folder, "log").read_text(encoding="utf-8", errors="replace")

    def connection_string(self, database="postgres", folder=None):
        return (f"Driver=PostgreSQL Unicode;Servername={folder or self.folder};Port={PORT};"
                f"Database={database};UID=talvex")

    def query(self, statement, database="postgres"):
        """The rows of a statement, each a list of texts, by the server's own client."""
        ran = subprocess.run(
            [program("psql"), "-X", "-q", "-A", "-t", "-F", "\t", "-v", "ON_ERROR_STOP=1",
             "-h", self.folder, "-U", "talvex", "-d", database, "-c", statement],
            capture_output=True, encoding="utf-8", check=False)
        assert ran.returncode == 0, ran.stderr
        return [line.split("\t") for line in ran.stdout.splitlines()]


class Relay:
    """A socket in front of the server's: it counts what goes through, and can be cut.

    Every answer of the server to a client's request ends with a message "ready for query", so their number is
    that of the round trips.
    """

    def __init__(self, server):
        self.folder = tempfile.mkdtemp(prefix="talvex-relay-")
        self.target = os.path.join(server.folder, f".s.PGSQL.{PORT}")
        self.round_trips = 0
        self.connections = 0
        self.ends = []
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(os.path.join(self.folder, f".s.PGSQL.{PORT}"))
        self.listener.listen()
        self.threads = []
        self.start(self.accept)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.listener.shutdown(socket.SHUT_RDWR)
        self.cut()
        for thread in self.threads:
            thread.join()
        for end in [self.listener, *self.ends]:
            end.close()
        shutil.rmtree(self.folder)

    def start(self, work, *arguments):
        self.threads.append(threading.Thread(target=work, args=arguments, daemon=True))
        self.threads[-1].start()

    def accept(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return  # Closed.
            server = socket.socket(socket.AF_UNIX)
            server.connect(self.target)
            self.connections += 1
            self.ends += [client, server]
            self.start(self.pass_on, client, server)
            self.start(self.pass_back, server, client)

    def pass_on(self, source, target):
        self.pump(source, target, lambda data: None)

    def pass_back(self, source, target):
        pending = bytearray()

        def count(data):
            pending.extend(data)
            while len(pending) >= 5:
                length = 1 + int.from_bytes(pending[1:5], "big")
                if len(pending) < length:
                    return
                self.round_trips += pending[0] == ord("Z")
                del pending[:length]

        self.pump(source, target, count)

    @staticmethod
    def pump(source, target, see):
        try:
            while data := source.recv(65536):
                see(data)
                target.sendall(data)
        except OSError:
            pass
        for end in (source, target):
            try:
                end.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass

    def cut(self):
        """Breaks every connection that is open; new ones go through."""
        for end in self.ends:
            try:
                end.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass  # Closed by its other side.
