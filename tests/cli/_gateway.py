"""A client of the gateway, one message at a time."""

import json
import resource
import subprocess

from _talvex import NOW, PROGRAM, environment


class Gateway:
    """A running gateway and the client's end of its pipes; its clock stands at `now`, None for the clock."""

    def __init__(self, site, memory=None, processor=None, now=NOW):
        def limit():
            if memory:
                resource.setrlimit(resource.RLIMIT_AS, (memory, memory))
            if processor:
                resource.setrlimit(resource.RLIMIT_CPU, (processor, processor))

        clock = ["--now", now] if now else []
        self.process = subprocess.Popen([PROGRAM, "--config", site, *clock, "rpc"], env=environment(),
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, preexec_fn=limit)
        self.next_id = 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        """Whatever a test left open, no process outlives it."""
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        self.process.stdout.close()
        try:
            self.process.stdin.close()
        except BrokenPipeError:
            pass  # It was not there to read the last of it.

    def write(self, data):
        self.process.stdin.write(data)
        self.process.stdin.flush()

    def read(self):
        return json.loads(self.process.stdout.readline())

    def send(self, line):
        """The answer to one raw line, which comes while the gateway waits for the next."""
        self.write(line + b"\n")
        return self.read()

    def ask(self, method, /, **params):
        self.next_id += 1
        message = {"jsonrpc": "2.0", "id": self.next_id, "method": method, "params": params}
        answer = self.send(json.dumps(message).encode())
        assert answer["id"] == self.next_id, answer
        return answer

    def result(self, method, /, **params):
        answer = self.ask(method, **params)
        assert "result" in answer, answer
        return answer["result"]

    def error_number(self, method, /, **params):
        answer = self.ask(method, **params)
        assert answer.get("error", {}).get("code") == -32000, answer
        return answer["error"]["data"]["number"]

    def create(self, name):
        return self.result("create", **{"class": name})["object"]

    def invoke(self, number, method, args):
        return self.result("invoke", object=number, method=method, args=args)

    def get(self, number, name):
        return self.result("get", object=number, property=name)["value"]

    def close_input(self):
        """Ends the input; the exit status."""
        self.process.stdin.close()
        return self.process.wait(timeout=60)
