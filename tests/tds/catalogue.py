"""What clients ask the catalogue, and the scripts that make its tables."""

import unittest

import _tds

SCRIPT = """
-- Made in two steps, and again without effect.
IF OBJECT_ID(N'dbo.LINES', N'U') IS NULL
CREATE TABLE [dbo].[LINES] (
  [ID]       INT IDENTITY(1,1) NOT NULL CONSTRAINT PK_LINES PRIMARY KEY CLUSTERED,
  CODE       NVARCHAR(50) COLLATE Latin1_General_100_CI_AS_SC_UTF8 NOT NULL,
  NOTE       NVARCHAR(MAX) NULL CONSTRAINT DF_LINES_NOTE DEFAULT N'it''s; new',
  AMOUNT     FLOAT NULL CONSTRAINT DF_LINES_AMOUNT DEFAULT (-1.5),
  STARTDATE  DATETIME NOT NULL DEFAULT GETDATE(),
  OPEN_      BIT NOT NULL DEFAULT ((1)),
  PRICE      DECIMAL(18, 4) NULL
);
IF NOT EXISTS (SELECT 1 FROM sys.indexes WHERE name = 'IX_LINES')
CREATE NONCLUSTERED INDEX IX_LINES ON dbo.LINES (CODE ASC, ID DESC) INCLUDE (NOTE);

IF OBJECT_ID('SQ_PARTS') IS NULL
CREATE SEQUENCE SQ_PARTS AS INT START WITH 5 INCREMENT BY 2;
IF OBJECT_ID('PARTS') IS NULL
CREATE TABLE PARTS (
  PARTID INT NOT NULL CONSTRAINT DF_PARTS DEFAULT (NEXT VALUE FOR SQ_PARTS),
  OFFICE NVARCHAR(50) NULL,
  LINE   INT NULL,
  CONSTRAINT PK_PARTS PRIMARY KEY (PARTID),
  CONSTRAINT UQ_PARTS UNIQUE (OFFICE),
  CONSTRAINT FK_PARTS_LINES FOREIGN KEY (LINE) REFERENCES LINES (ID)
)
"""

COLUMNS = [  # (name, number of the type, its name, size, nullable)
    ("ID", 4, "int identity", 10, 0), ("CODE", -9, "nvarchar", 50, 0), ("NOTE", -9, "nvarchar", 0, 1),
    ("AMOUNT", 6, "float", 53, 1), ("STARTDATE", 93, "datetime", 23, 0), ("OPEN_", -7, "bit", 1, 0),
    ("PRICE", 3, "decimal", 18, 1)]

# How a client that wants to write to a table may ask for its key and for the columns that are assigned.
KEY_QUERY = """SELECT t.name, c.name, CASE WHEN EXISTS (SELECT 1 FROM sys.index_columns k
  WHERE k.object_id = c.object_id AND k.column_id = c.column_id AND k.is_included_column = 0
    AND k.index_id = (SELECT TOP 1 i.index_id FROM sys.indexes i WHERE i.object_id = t.object_id
      AND i.is_unique = 1 AND i.has_filter = 0 ORDER BY i.is_primary_key DESC, i.index_id)) THEN 1 ELSE 0 END,
  CASE WHEN c.is_identity = 1 OR EXISTS (SELECT 1 FROM sys.default_constraints d
    WHERE d.object_id = c.default_object_id AND d.definition LIKE '%NEXT VALUE FOR%') THEN 1 ELSE 0 END
FROM sys.tables t, sys.columns c WHERE c.object_id = t.object_id AND t.object_id = OBJECT_ID(?)
ORDER BY c.column_id"""


class Catalogue(_tds.ServerTest):
    def setUp(self):
        super().setUp()
        self.db.results(SCRIPT)

    def test_the_script_can_be_run_again(self):
        self.db.results("INSERT INTO LINES (CODE) VALUES ('a')")
        self.db.results(SCRIPT)
        self.assertEqual(self.db.rows("SELECT COUNT(*) FROM LINES"), [(1,)])

    def test_defaults_fill_what_is_not_given(self):
        self.db.results("INSERT INTO LINES (CODE) VALUES ('a')")
        rows = self.db.rows("SELECT ID, NOTE, AMOUNT, OPEN_, PRICE FROM LINES WHERE STARTDATE > '2020-01-01'")
        self.assertEqual(rows, [(1, "it's; new", -1.5, 1, None)])

    def test_a_sequence_gives_the_next_number_unless_one_is_given(self):
        self.db.results("INSERT INTO PARTS (OFFICE) VALUES ('a'), ('b')")
        self.db.results("INSERT INTO PARTS (PARTID, OFFICE) VALUES (100, 'c')")
        given = self.db.rows("INSERT INTO PARTS (OFFICE) OUTPUT INSERTED.PARTID VALUES ('d')")
        self.assertEqual(given, [(9,)])
        self.assertEqual(self.db.rows("SELECT PARTID FROM PARTS ORDER BY PARTID"), [(5,), (7,), (9,), (100,)])
        self.assertEqual(self.db.rows("SELECT NEXT VALUE FOR SQ_PARTS AS N"), [(11,)])

    def test_a_unique_column_takes_null_once(self):
        self.db.results("INSERT INTO PARTS (OFFICE) VALUES (NULL)")
        self.assertIn("'UQ_PARTS'", str(self.refused(2627, "INSERT INTO PARTS (OFFICE) VALUES (NULL)")))

    def test_columns(self):
        rows = self.db.columns("LINES").rows
        self.assertEqual([(row[3], row[4], row[5], row[6], row[10]) for row in rows], COLUMNS)
        self.assertEqual([row[16] for row in rows], list(range(1, 8)))
        self.assertEqual([row[3] for row in self.db.columns("LINES", "A%").rows], ["AMOUNT"])
        self.assertEqual(self.db.columns("NOWHERE").rows, [])

    def test_primary_keys(self):
        keys = self.db.primary_keys("lines").rows
        self.assertEqual(keys, [("talvex", "dbo", "LINES", "ID", 1, "PK_LINES")])
        self.table("B INT, A INT, CONSTRAINT PK_P PRIMARY KEY (A, B)", "P")
        self.assertEqual([row[3:5] for row in self.db.primary_keys("P").rows], [("A", 1), ("B", 2)])
        self.table("A INT", "NOKEY")
        self.assertEqual(self.db.primary_keys("NOKEY").rows, [])

    def test_tables(self):
        rows = self.db.tables().rows
        self.assertEqual([row[2:4] for row in rows], [("LINES", "TABLE"), ("PARTS", "TABLE")])
        self.assertEqual([row[2] for row in self.db.tables("P%").rows], ["PARTS"])

    def test_keys_and_assigned_columns_by_query(self):
        self.assertEqual([row[1:] for row in self.db.rows(KEY_QUERY, "lines")],
                         [("ID", 1, 1), ("CODE", 0, 0), ("NOTE", 0, 0), ("AMOUNT", 0, 0), ("STARTDATE", 0, 0),
                          ("OPEN_", 0, 0), ("PRICE", 0, 0)])
        self.assertEqual(self.db.rows(KEY_QUERY, "PARTS"),
                         [("PARTS", "PARTID", 1, 1), ("PARTS", "OFFICE", 0, 0), ("PARTS", "LINE", 0, 0)])
        self.table("A NVARCHAR(9) NULL, B INT, CONSTRAINT UQ_Q UNIQUE (A)", "Q")
        self.assertEqual([row[1:] for row in self.db.rows(KEY_QUERY, "Q")], [("A", 1, 0), ("B", 0, 0)])
        self.assertEqual(self.db.rows(KEY_QUERY, "NOWHERE"), [])

    def test_what_a_result_says_of_its_columns(self):
        with _tds._odbc.Statement(self.db) as statement:
            result = statement.run("SELECT ID, CODE, AMOUNT AS A FROM LINES")[0]
            self.assertEqual([(column.name, column.size, column.nullable) for column in result.columns],
                             [("ID", 10, False), ("CODE", 50, False), ("A", 53, True)])
        with _tds._odbc.Statement(self.db) as statement:
            statement.prepare("SELECT ID, CODE FROM LINES")
            self.assertEqual(len(statement.columns()), 2)
            self.assertEqual([statement.is_assigned(1), statement.is_assigned(2)], [True, False])

    def test_the_tables_of_an_installation(self):
        """schema/sqlserver.sql, statement by statement, twice."""
        text = (_tds.SOURCE_DIR / "schema" / "sqlserver.sql").read_text(encoding="utf-8")
        for _ in range(2):
            self.db.results(text)
        names = {row[2] for row in self.db.tables().rows}
        self.assertLessEqual({"BUDGET", "BUDGETLINES", "BUDGETRELATIONS", "CHARGELINES", "LEDGERACCOUNT",
                              "ACCOUNTINGRULE", "I18NTEXT", "SUITEUSER", "REQUISITIONLINE"}, names)

    def test_dropped_things_are_gone(self):
        self.db.results("DROP TABLE PARTS; DROP SEQUENCE SQ_PARTS; DROP INDEX IX_LINES ON LINES")
        self.refused(208, "SELECT * FROM PARTS")
        self.refused(3701, "DROP TABLE PARTS")
        self.db.results("DROP TABLE IF EXISTS PARTS")
        self.db.results(SCRIPT)
        self.assertEqual(self.db.rows("SELECT COUNT(*) FROM PARTS"), [(0,)])


if __name__ == "__main__":
    unittest.main()
