"""The protocol itself, where an ordinary client would not notice or would not send."""

import struct
import unittest

import _raw
import _tds

DONE, DONE_OF_CALL, DONE_IN_CALL = 0xFD, 0xFE, 0xFF
COUNTED, FAILED, ATTENTION, MORE = 0x10, 0x02, 0x20, 0x01
BEGIN, COMMIT = 5, 7


class Protocol(_tds.ServerTest):
    def setUp(self):
        super().setUp()
        self.table("A INT NOT NULL PRIMARY KEY")
        self.raw = _raw.RawSession(self.server.port)
        self.addCleanup(self.raw.close)

    def request(self, kind, rest=b""):
        """The answer to a request of the transaction manager."""
        return self.raw.ask(14, self.raw.headers() + struct.pack("<H", kind) + rest)

    def test_a_login_without_options_is_acknowledged(self):
        self.assertIn(b"\xad", self.raw.answer)
        self.assertEqual(_raw.last_done(self.raw.answer), (DONE, 0, 0))

    def test_counts_are_in_the_last_token(self):
        self.assertEqual(_raw.last_done(self.raw.batch("INSERT INTO T VALUES (1), (2)")), (DONE, COUNTED, 2))
        self.assertEqual(_raw.last_done(self.raw.batch("SET NOCOUNT ON")), (DONE, 0, 0))
        self.assertEqual(_raw.last_done(self.raw.batch("DELETE T")), (DONE, 0, 0))

    def test_every_statement_but_the_last_says_that_there_is_more(self):
        answer = self.raw.batch("DELETE T; DELETE T; DELETE T")
        self.assertEqual(len(answer), 3 * 13)
        self.assertEqual([answer[at + 1] & MORE for at in (0, 13, 26)], [1, 1, 0])

    def test_an_empty_batch_is_done(self):
        self.assertEqual(_raw.last_done(self.raw.batch(" -- nothing")), (DONE, 0, 0))

    def test_a_message_may_come_in_many_packets(self):
        self.raw.send(1, self.raw.headers() + ("DELETE T --" + "x" * 5000).encode("utf-16-le"), size=512)
        self.assertEqual(_raw.last_done(self.raw.receive()), (DONE, COUNTED, 0))

    def test_a_message_given_up_half_way_is_passed_over(self):
        data = self.raw.headers() + "INSERT INTO T VALUES (1)".encode("utf-16-le")
        self.raw.socket.sendall(struct.pack(">BBHHBB", 1, 3, len(data) + 8, 0, 1, 0) + data)
        self.assertEqual(_raw.last_done(self.raw.batch("DELETE T")), (DONE, COUNTED, 0))

    def test_a_cancellation_without_a_request_is_acknowledged(self):
        self.assertEqual(_raw.last_done(self.raw.ask(6, b"")), (DONE, ATTENTION, 0))
        self.assertEqual(_raw.last_done(self.raw.batch("DELETE T")), (DONE, COUNTED, 0))

    def test_a_request_must_name_the_open_transaction(self):
        begun = self.request(BEGIN, b"\x00\x00")
        self.assertEqual(begun[:5], b"\xe3\x0b\x00\x08\x08")
        self.assertEqual(_raw.error_numbers(self.raw.batch("DELETE T")), [3989])
        self.raw.transaction = struct.unpack_from("<Q", begun, 5)[0]
        self.assertEqual(_raw.last_done(self.raw.batch("INSERT INTO T VALUES (1)")), (DONE, COUNTED, 1))
        ended = self.request(COMMIT, b"\x00\x00")
        self.assertEqual(ended[:5], b"\xe3\x0b\x00\x09\x00")
        self.assertEqual(_raw.error_numbers(self.raw.batch("DELETE T")), [3989])
        self.assertEqual(self.db.rows("SELECT A FROM T"), [(1,)])

    def test_calls_in_one_message_are_answered_one_after_the_other(self):
        statement = _raw.text("INSERT INTO T VALUES (@P1)") + _raw.text("@P1 int")
        call = struct.pack("<HHH", 0xFFFF, 10, 0) + statement
        calls = call + _raw.integer(1) + b"\xff" + call + _raw.integer(2, "@P1")
        answer = self.raw.ask(3, self.raw.headers() + calls)
        self.assertEqual(_raw.last_done(answer), (DONE_OF_CALL, 0, 0))
        self.assertEqual(self.db.rows("SELECT A FROM T"), [(1,), (2,)])

    def test_a_prepared_statement_has_a_handle_until_it_is_dropped(self):
        handle = b"\x00\x01" + _raw.integer(None)[2:]
        prepared = self.raw.call(11, handle, _raw.text("@P1 int"), _raw.text("INSERT INTO T VALUES (@P1)"))
        number = struct.unpack("<i", prepared[-17:-13])[0]
        self.assertEqual(prepared[:5], b"\x79" + bytes(4))
        for value, failed in ((7, 0), (7, FAILED), (8, 0)):
            answer = self.raw.call(12, _raw.integer(number), _raw.integer(value))
            self.assertEqual(_raw.last_done(answer)[:2], (DONE_OF_CALL, failed))
        self.assertEqual(_raw.error_numbers(self.raw.call(12, _raw.integer(number))), [201])
        self.assertEqual(_raw.last_done(self.raw.call(15, _raw.integer(number)))[1], 0)
        self.assertEqual(_raw.error_numbers(self.raw.call(12, _raw.integer(number), _raw.integer(9))), [8179])
        self.assertEqual(_raw.error_numbers(self.raw.call(15, _raw.integer(number))), [8179])
        self.assertEqual(self.db.rows("SELECT A FROM T"), [(7,), (8,)])

    def test_a_parameter_of_no_known_type_is_refused(self):
        answer = self.raw.call(10, b"\x00\x00\x99")
        self.assertIn("a parameter of type 0x99".encode("utf-16-le"), answer)
        self.assertEqual(_raw.last_done(self.raw.batch("DELETE T")), (DONE, COUNTED, 0))

    def test_an_unknown_variable_is_refused(self):
        self.assertEqual(_raw.error_numbers(self.raw.batch("DELETE T WHERE A = @P1")), [137])

    def test_the_first_and_the_last_day_of_datetime2(self):
        self.db.results("CREATE TABLE D (A DATETIME2)")
        insert = [_raw.text("INSERT INTO D VALUES (@P1)"), _raw.text("@P1 datetime2")]
        for days, written in ((0, "0001-01-01"), (3652058, "9999-12-31")):
            value = b"\x00\x00\x2a\x07\x08" + bytes(5) + struct.pack("<I", days)[:3]
            answer = self.raw.call(10, *insert, value)
            self.assertEqual(_raw.last_done(answer), (DONE_OF_CALL, 0, 0))
            self.assertEqual(self.db.rows(f"SELECT COUNT(*) FROM D WHERE A = '{written}'"), [(1,)])
        value = b"\x00\x00\x2a\x07\x08" + bytes(5) + struct.pack("<I", 3652059)[:3]
        self.assertEqual(_raw.error_numbers(self.raw.call(10, *insert, value)), [50000])


if __name__ == "__main__":
    unittest.main()
