"""Values of every type, on their way into a table and out again."""

import datetime
import decimal
import unittest

import _odbc
import _tds

LONG = "".join(chr(0x41 + number % 26) for number in range(4000))
BEYOND = "\U0001f600"  # Two units of UTF-16.

# (type, value, what comes back), sent as a parameter.
ROUND_TRIPS = [
    ("INT", 0, 0), ("INT", 2147483647, 2147483647), ("INT", -2147483648, -2147483648),
    ("SMALLINT", -32768, -32768), ("TINYINT", 255, 255),
    ("BIGINT", 9223372036854775807, 9223372036854775807),
    ("BIGINT", -9223372036854775808, -9223372036854775808),
    ("BIT", True, 1), ("BIT", False, 0),
    ("FLOAT", 0.1, 0.1), ("FLOAT", 1 / 3, 1 / 3), ("FLOAT", 12345678.901234567, 12345678.901234567),
    ("FLOAT", -1.7976931348623157e308, -1.7976931348623157e308), ("FLOAT", 2.2250738585072014e-308,
                                                                  2.2250738585072014e-308),
    ("FLOAT", 3.0, 3.0), ("FLOAT", 5, 5.0),
    ("DECIMAL(18, 4)", decimal.Decimal("12345.6789"), decimal.Decimal("12345.6789")),
    ("DECIMAL(18, 4)", decimal.Decimal("-0.0001"), decimal.Decimal("-0.0001")),
    ("NVARCHAR(50)", "", ""), ("NVARCHAR(50)", "Grüße €", "Grüße €"), ("NVARCHAR(50)", "it's", "it's"),
    ("NVARCHAR(50)", BEYOND * 25, BEYOND * 25), ("NVARCHAR(50)", " a ", " a "),
    ("NVARCHAR(4000)", LONG, LONG), ("NVARCHAR(4000)", BEYOND * 2000, BEYOND * 2000),
    ("NVARCHAR(MAX)", LONG * 3, LONG * 3), ("NVARCHAR(MAX)", BEYOND * 5000, BEYOND * 5000),
    ("NVARCHAR(MAX)", "", ""),
    ("VARCHAR(200)", "Grüße €" + BEYOND, "Grüße €" + BEYOND),
    ("DATETIME", datetime.datetime(2026, 3, 15, 14, 30, 5), "2026-03-15T14:30:05"),
    ("DATETIME", datetime.datetime(1753, 1, 1), "1753-01-01T00:00:00"),
    ("DATETIME", datetime.datetime(9999, 12, 31, 23, 59, 59), "9999-12-31T23:59:59"),
    ("DATETIME", datetime.datetime(9999, 12, 31, 23, 59, 59, 997000), "9999-12-31T23:59:59.997"),
    ("DATETIME", datetime.datetime(1899, 12, 31, 12), "1899-12-31T12:00:00"),
    ("DATETIME2", datetime.datetime(1753, 1, 1), "1753-01-01T00:00:00"),
    ("DATETIME2(3)", datetime.datetime(2026, 3, 15, 1, 2, 3, 4000), "2026-03-15T01:02:03.004"),
    ("DATE", datetime.datetime(2026, 3, 15), "2026-03-15T00:00:00"),
]
NULLS = ["INT", "SMALLINT", "BIGINT", "BIT", "FLOAT", "DECIMAL(9, 2)", "NVARCHAR(50)", "NVARCHAR(MAX)",
         "VARCHAR(50)", "DATETIME", "DATETIME2", "DATE"]

# (text of a literal, its type by ODBC's number, the value)
LITERALS = [
    ("5", 4, 5), ("3000000000", -5, 3000000000), ("'a'", -9, "a"), ("N'ü'", -9, "ü"), ("'it''s'", -9, "it's"),
    ("1.50", 2, decimal.Decimal("1.50")), ("1E-1", 8, 0.1), ("NULL", 4, None), ("COUNT(*)", 4, 1),
    ("CAST('7' AS INT)", 4, 7), ("CAST('2026-03-15' AS DATETIME)", 93, "2026-03-15T00:00:00"),
    ("CONVERT(NVARCHAR(3), 'abcdef')", -9, "abc"), ("CAST(1 AS BIT)", -7, 1), ("LEN('ab  ')", 4, 2),
    ("ISNULL(NULL, 'x')", -9, "x"), ("'a' + 'b'", -9, "ab"), ("COALESCE(NULL, 4)", 4, 4),
    ("CASE WHEN 'a' LIKE 'A' THEN 1 ELSE 0 END", 4, 1), ("SUBSTRING('budget', 2, 3)", -9, "udg"),
]

# (pattern, text, whether it is like it)
PATTERNS = [("A%", "abc", True), ("a_c", "ABC", True), ("a_c", "abbc", False), ("[a-c]x", "Bx", True),
            ("[^a-c]x", "bx", False), ("50[%]", "50%", True), ("50[%]", "500", False), ("%\n%", "a\nb", True)]


class RoundTrips(_tds.ServerTest):
    def test_parameters_come_back_as_they_were_sent(self):
        for number, (kind, value, expected) in enumerate(ROUND_TRIPS):
            with self.subTest(kind, value=str(value)[:40]):
                name = f"T{number}"
                self.table(f"A {kind}", name)
                self.assertEqual(self.db.count(f"INSERT INTO {name} (A) VALUES (?)", value), 1)
                self.assertEqual(self.db.rows(f"SELECT A FROM {name}"), [(expected,)])

    def test_null_is_null_in_every_type(self):
        self.table(", ".join(f"C{number} {kind}" for number, kind in enumerate(NULLS)))
        self.db.results("INSERT INTO T (C0) VALUES (?)", None)
        self.assertEqual(self.db.rows("SELECT * FROM T"), [(None,) * len(NULLS)])

    def test_literals_have_the_type_and_value_they_show(self):
        for literal, kind, value in LITERALS:
            with self.subTest(literal):
                result = self.db.results(f"SELECT {literal}")[0]
                self.assertEqual((result.columns[0].type, result.rows), (kind, [(value,)]))

    def test_literals_of_floats_keep_17_digits(self):
        self.table("A FLOAT")
        for number in (0.1, 1 / 3, 5e-324, 1.7976931348623157e308, 9007199254740993.0, 8.41e21,
                       2.2250738585072011e-308):
            with self.subTest(number):
                self.db.results(f"INSERT INTO T VALUES ({number!r})")
                self.assertEqual(self.db.rows("SELECT A FROM T"), [(number,)])
                self.assertEqual(self.db.count(f"DELETE T WHERE A = {number!r}"), 1)

    def test_datetime_keeps_300ths_of_a_second(self):
        self.table("A DATETIME")
        for written, kept in (("00:00:00.999", "00:00:01"), ("00:00:00.002", "00:00:00.003"),
                              ("23:59:58.994", "23:59:58.993")):
            with self.subTest(written):
                self.db.results("DELETE T")
                self.db.results(f"INSERT INTO T VALUES ('2026-03-15T{written}')")
                self.assertEqual(self.db.rows("SELECT A FROM T"), [(f"2026-03-15T{kept}",)])

    def test_texts_can_be_read_in_the_encoding_of_the_client(self):
        self.table("A NVARCHAR(4000), B VARCHAR(4000)")
        text = "Grüße €" + BEYOND
        self.db.results("INSERT INTO T VALUES (?, ?)", text * 100, text * 10)
        with _odbc.Statement(self.db) as statement:
            query = _odbc.wide("SELECT A, B FROM T")
            statement.check(_odbc._library.SQLExecDirectW(statement.handle, query, _odbc.NTS))
            statement.check(_odbc._library.SQLFetch(statement.handle))
            self.assertEqual(statement.text(1, _odbc.C_CHAR), text * 100)
            self.assertEqual(statement.text(2, _odbc.C_CHAR), text * 10)

    def test_texts_without_a_prefix_keep_all_letters(self):
        """The database's collation is in UTF-8, so 'x' loses no more than N'x'."""
        self.table("A NVARCHAR(50)")
        self.db.results(f"INSERT INTO T VALUES ('Łódź{BEYOND}')")
        self.assertEqual(self.db.rows(f"SELECT A FROM T WHERE A = N'łódź{BEYOND}'"), [(f"Łódź{BEYOND}",)])

    def test_results_larger_than_a_packet(self):
        self.table("A INT, B NVARCHAR(4000)")
        for number in range(20):
            self.db.results("INSERT INTO T VALUES (?, ?)", number, LONG)
        self.assertEqual(self.db.rows("SELECT * FROM T ORDER BY A"), [(number, LONG) for number in range(20)])


class Comparing(_tds.ServerTest):
    def test_texts_compare_without_case_and_blanks_at_the_end(self):
        self.table("A NVARCHAR(50), CONSTRAINT PK_T PRIMARY KEY (A)")
        self.db.results("INSERT INTO T VALUES ('Ärger')")
        for same in ("ärger", "ÄRGER  "):
            self.assertEqual(self.db.rows("SELECT A FROM T WHERE A = ?", same), [("Ärger",)])
        self.assertEqual(self.db.rows("SELECT A FROM T WHERE A = ?", " Ärger"), [])
        self.refused(2627, "INSERT INTO T VALUES ('ÄRGER ')")

    def test_an_exact_collation_compares_exactly(self):
        self.table("A NVARCHAR(50) COLLATE Latin1_General_100_BIN2_UTF8")
        self.db.results("INSERT INTO T VALUES ('x')")
        self.assertEqual(self.db.rows("SELECT A FROM T WHERE A = 'X'"), [])

    def test_dates_compare_as_dates_however_they_are_written(self):
        self.table("A DATETIME")
        self.db.results("INSERT INTO T VALUES ('2026-03-15 14:30:05')")
        for same in ("2026-03-15T14:30:05", "20260315 14:30:05", "2026-3-15 14:30:05.000"):
            self.assertEqual(self.db.rows(f"SELECT A FROM T WHERE A = '{same}'"), [("2026-03-15T14:30:05",)])
        inside = "SELECT COUNT(*) FROM T WHERE A > '2026-03-15' AND A < '20260316'"
        self.assertEqual(self.db.rows(inside), [(1,)])
        moment = datetime.datetime(2026, 3, 15, 14, 30, 5)
        rows = self.db.rows("SELECT COUNT(*) FROM T WHERE A <= ? AND A >= ?", moment, moment)
        self.assertEqual(rows, [(1,)])

    def test_a_quotient_is_a_number_below_every_date(self):
        self.table("A DATETIME")
        self.db.results("INSERT INTO T VALUES ('2026-03-15'), (NULL)")
        self.assertEqual(self.db.rows("SELECT COUNT(*) FROM T WHERE A >= 3/16/2026"), [(1,)])

    def test_now_is_a_date_that_passes(self):
        rows = self.db.rows("SELECT GETDATE() WHERE GETDATE() > '2020-01-01' AND GETDATE() < '9999-01-01'")
        age = datetime.datetime.now() - datetime.datetime.fromisoformat(rows[0][0][:19])
        self.assertLess(abs(age.total_seconds()), 60)

    def test_patterns(self):
        self.table("A NVARCHAR(50)")
        for pattern, text, expected in PATTERNS:
            with self.subTest(pattern, text=text):
                self.db.results("DELETE T")
                self.db.results("INSERT INTO T VALUES (?)", text)
                self.assertEqual(bool(self.db.rows("SELECT 1 FROM T WHERE A LIKE ?", pattern)), expected)


if __name__ == "__main__":
    unittest.main()
