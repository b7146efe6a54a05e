-- The tables of an embedded (SQLite) installation. The script may be run again: what exists stays as it is.
--
-- SQLite stores any value in any column, so the CHECK constraints refuse what a database server would refuse:
-- values of another type, texts that are too long, numbers out of range, dates that do not exist.
-- The name of a constraint is the error text that a caller gets to read, which is why it is a sentence.
--
-- A CHECK refuses a row only when it is false. A comparison with Null is Null and passes, so the word 'null'
-- in a list of types is all that makes a column nullable.
--
-- The declared types tell the driver which value to hand out: NVARCHAR a text, INT a 32-bit integer, FLOAT a
-- double, DATETIME a date, which is kept as text so that dates compare and sort as texts. SQLite converts
-- before it checks: the double 3.0 becomes the integer 3 in an INT column, the integer 3 the double 3.0 in a
-- FLOAT column. The number 9e999 is beyond every double and so stands for infinity.
--
-- Texts compare without case (NOCASE, the letters A to Z). A table WITHOUT ROWID is kept in the order of its
-- key: the order in which rows were written has no influence on the order in which a query returns them.


-- -----------------------------------------------------------------------------
-- Budgets
-- -----------------------------------------------------------------------------

-- One row per budget. BUDGETTYPE is 1 for a standard budget and 2 for an aggregate one.
CREATE TABLE IF NOT EXISTS BUDGET (
  BUDGETCODE        NVARCHAR(50)   COLLATE NOCASE NOT NULL,
  BUDGETTYPE        INT,
  CURRENCYCODE      NVARCHAR(50)   COLLATE NOCASE,
  OFFICEDESCRIPTION NVARCHAR(50)   COLLATE NOCASE,
  CHARGETYPECODE    NVARCHAR(50)   COLLATE NOCASE,
  USERID            NVARCHAR(50)   COLLATE NOCASE,
  APPROVEINBUDGET   INT,
  BUDGETWARNING     FLOAT,
  BUDGETDIMENSION1  NVARCHAR(2000) COLLATE NOCASE DEFAULT '',
  BUDGETDIMENSION2  NVARCHAR(2000) COLLATE NOCASE DEFAULT '',
  BUDGETDIMENSION3  NVARCHAR(2000) COLLATE NOCASE DEFAULT '',

  CONSTRAINT PK_BUDGET PRIMARY KEY (BUDGETCODE),
  CONSTRAINT "BUDGET.BUDGETCODE takes a text of at most 50 characters"
    CHECK (typeof(BUDGETCODE) = 'text' AND length(BUDGETCODE) <= 50),
  CONSTRAINT "BUDGET.BUDGETTYPE takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(BUDGETTYPE) IN ('null', 'integer') AND BUDGETTYPE BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "BUDGET.CURRENCYCODE takes a text of at most 50 characters"
    CHECK (typeof(CURRENCYCODE) IN ('null', 'text') AND length(CURRENCYCODE) <= 50),
  CONSTRAINT "BUDGET.OFFICEDESCRIPTION takes a text of at most 50 characters"
    CHECK (typeof(OFFICEDESCRIPTION) IN ('null', 'text') AND length(OFFICEDESCRIPTION) <= 50),
  CONSTRAINT "BUDGET.CHARGETYPECODE takes a text of at most 50 characters"
    CHECK (typeof(CHARGETYPECODE) IN ('null', 'text') AND length(CHARGETYPECODE) <= 50),
  CONSTRAINT "BUDGET.USERID takes a text of at most 50 characters"
    CHECK (typeof(USERID) IN ('null', 'text') AND length(USERID) <= 50),
  CONSTRAINT "BUDGET.APPROVEINBUDGET takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(APPROVEINBUDGET) IN ('null', 'integer')
           AND APPROVEINBUDGET BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "BUDGET.BUDGETWARNING takes a finite number"
    CHECK (typeof(BUDGETWARNING) IN ('null', 'real', 'integer') AND abs(BUDGETWARNING) < 9e999),
  CONSTRAINT "BUDGET.BUDGETDIMENSION1 takes a text of at most 2000 characters"
    CHECK (typeof(BUDGETDIMENSION1) IN ('null', 'text') AND length(BUDGETDIMENSION1) <= 2000),
  CONSTRAINT "BUDGET.BUDGETDIMENSION2 takes a text of at most 2000 characters"
    CHECK (typeof(BUDGETDIMENSION2) IN ('null', 'text') AND length(BUDGETDIMENSION2) <= 2000),
  CONSTRAINT "BUDGET.BUDGETDIMENSION3 takes a text of at most 2000 characters"
    CHECK (typeof(BUDGETDIMENSION3) IN ('null', 'text') AND length(BUDGETDIMENSION3) <= 2000)
) WITHOUT ROWID;

-- The budgets of a holder, in the order of their codes.
CREATE INDEX IF NOT EXISTS IX_BUDGET_USERID
  ON BUDGET (USERID, BUDGETCODE);

-- The candidates when a budget is chosen for a requisition line.
CREATE INDEX IF NOT EXISTS IX_BUDGET_OFFICE_CHARGETYPE
  ON BUDGET (OFFICEDESCRIPTION, CHARGETYPECODE, BUDGETCODE);


-- The periods of a budget. The database numbers them and never gives a number twice.
CREATE TABLE IF NOT EXISTS BUDGETLINES (
  ID                  INTEGER CONSTRAINT PK_BUDGETLINES PRIMARY KEY AUTOINCREMENT,
  BUDGETCODE          NVARCHAR(50) COLLATE NOCASE,
  STARTDATE           DATETIME,
  ENDDATE             DATETIME,
  BUDGETAMNT          FLOAT,
  USEDNOTAPPROVEDAMNT FLOAT,
  USEDAPPROVEDAMNT    FLOAT,
  USEDSENDAMNT        FLOAT,
  USEDRECEIVEDAMNT    FLOAT,
  USEDCLOSEDAMNT      FLOAT,
  AVAILABLEAMNT       FLOAT,
  AVAILABLEPERC       FLOAT,

  CONSTRAINT "BUDGETLINES.ID takes a whole number from -2147483648 to 2147483647"
    CHECK (ID BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "BUDGETLINES.BUDGETCODE takes a text of at most 50 characters"
    CHECK (typeof(BUDGETCODE) IN ('null', 'text') AND length(BUDGETCODE) <= 50),
  CONSTRAINT "BUDGETLINES.STARTDATE takes a date in the form YYYY-MM-DDTHH:MM:SS"
    CHECK (typeof(STARTDATE) IN ('null', 'text') AND STARTDATE GLOB '????-??-??T??:??:??'
           AND strftime('%Y-%m-%dT%H:%M:%S', STARTDATE, '+0 days') IS STARTDATE),
  CONSTRAINT "BUDGETLINES.ENDDATE takes a date in the form YYYY-MM-DDTHH:MM:SS"
    CHECK (typeof(ENDDATE) IN ('null', 'text') AND ENDDATE GLOB '????-??-??T??:??:??'
           AND strftime('%Y-%m-%dT%H:%M:%S', ENDDATE, '+0 days') IS ENDDATE),
  CONSTRAINT "BUDGETLINES.BUDGETAMNT takes a finite number"
    CHECK (typeof(BUDGETAMNT) IN ('null', 'real', 'integer') AND abs(BUDGETAMNT) < 9e999),
  CONSTRAINT "BUDGETLINES.USEDNOTAPPROVEDAMNT takes a finite number"
    CHECK (typeof(USEDNOTAPPROVEDAMNT) IN ('null', 'real', 'integer') AND abs(USEDNOTAPPROVEDAMNT) < 9e999),
  CONSTRAINT "BUDGETLINES.USEDAPPROVEDAMNT takes a finite number"
    CHECK (typeof(USEDAPPROVEDAMNT) IN ('null', 'real', 'integer') AND abs(USEDAPPROVEDAMNT) < 9e999),
  CONSTRAINT "BUDGETLINES.USEDSENDAMNT takes a finite number"
    CHECK (typeof(USEDSENDAMNT) IN ('null', 'real', 'integer') AND abs(USEDSENDAMNT) < 9e999),
  CONSTRAINT "BUDGETLINES.USEDRECEIVEDAMNT takes a finite number"
    CHECK (typeof(USEDRECEIVEDAMNT) IN ('null', 'real', 'integer') AND abs(USEDRECEIVEDAMNT) < 9e999),
  CONSTRAINT "BUDGETLINES.USEDCLOSEDAMNT takes a finite number"
    CHECK (typeof(USEDCLOSEDAMNT) IN ('null', 'real', 'integer') AND abs(USEDCLOSEDAMNT) < 9e999),
  CONSTRAINT "BUDGETLINES.AVAILABLEAMNT takes a finite number"
    CHECK (typeof(AVAILABLEAMNT) IN ('null', 'real', 'integer') AND abs(AVAILABLEAMNT) < 9e999),
  CONSTRAINT "BUDGETLINES.AVAILABLEPERC takes a finite number"
    CHECK (typeof(AVAILABLEPERC) IN ('null', 'real', 'integer') AND abs(AVAILABLEPERC) < 9e999)
);

-- The line in force on a date. ID comes before the dates so that, where periods overlap, the first row is
-- always the line that was made first, as in a listing of the whole table.
CREATE INDEX IF NOT EXISTS IX_BUDGETLINES_BUDGETCODE
  ON BUDGETLINES (BUDGETCODE, ID, STARTDATE, ENDDATE);


-- The hierarchy of budgets. No foreign keys: a child may be unknown here, and a loop can only be looked for.
CREATE TABLE IF NOT EXISTS BUDGETRELATIONS (
  PARENTBUDGET NVARCHAR(50) COLLATE NOCASE NOT NULL,
  CHILDBUDGET  NVARCHAR(50) COLLATE NOCASE NOT NULL,

  CONSTRAINT PK_BUDGETRELATIONS PRIMARY KEY (PARENTBUDGET, CHILDBUDGET),
  CONSTRAINT "BUDGETRELATIONS.PARENTBUDGET takes a text of at most 50 characters"
    CHECK (typeof(PARENTBUDGET) = 'text' AND length(PARENTBUDGET) <= 50),
  CONSTRAINT "BUDGETRELATIONS.CHILDBUDGET takes a text of at most 50 characters"
    CHECK (typeof(CHILDBUDGET) = 'text' AND length(CHILDBUDGET) <= 50)
) WITHOUT ROWID;

-- The parents of a budget, in the order of their codes: amounts climb the hierarchy in this order.
CREATE INDEX IF NOT EXISTS IX_BUDGETRELATIONS_CHILDBUDGET
  ON BUDGETRELATIONS (CHILDBUDGET, PARENTBUDGET);


-- What the three dimensions of the budgets of an office stand for. The row without office serves all other
-- offices, so the key is nullable. SQLite lets several rows have a Null key, hence the index below.
CREATE TABLE IF NOT EXISTS BUDGETDIMENSIONTYPE (
  OFFICEDESCRIPTION NVARCHAR(50) COLLATE NOCASE,
  BUDGETDIMTYPE1    NVARCHAR(50) COLLATE NOCASE,
  BUDGETDIMTYPE2    NVARCHAR(50) COLLATE NOCASE,
  BUDGETDIMTYPE3    NVARCHAR(50) COLLATE NOCASE,

  CONSTRAINT PK_BUDGETDIMENSIONTYPE PRIMARY KEY (OFFICEDESCRIPTION),
  CONSTRAINT "BUDGETDIMENSIONTYPE.OFFICEDESCRIPTION takes a text of at most 50 characters"
    CHECK (typeof(OFFICEDESCRIPTION) IN ('null', 'text') AND length(OFFICEDESCRIPTION) <= 50),
  CONSTRAINT "BUDGETDIMENSIONTYPE.BUDGETDIMTYPE1 takes a text of at most 50 characters"
    CHECK (typeof(BUDGETDIMTYPE1) IN ('null', 'text') AND length(BUDGETDIMTYPE1) <= 50),
  CONSTRAINT "BUDGETDIMENSIONTYPE.BUDGETDIMTYPE2 takes a text of at most 50 characters"
    CHECK (typeof(BUDGETDIMTYPE2) IN ('null', 'text') AND length(BUDGETDIMTYPE2) <= 50),
  CONSTRAINT "BUDGETDIMENSIONTYPE.BUDGETDIMTYPE3 takes a text of at most 50 characters"
    CHECK (typeof(BUDGETDIMTYPE3) IN ('null', 'text') AND length(BUDGETDIMTYPE3) <= 50)
);

CREATE UNIQUE INDEX IF NOT EXISTS "BUDGETDIMENSIONTYPE takes at most one row without an office"
  ON BUDGETDIMENSIONTYPE ((1)) WHERE OFFICEDESCRIPTION IS NULL;


-- -----------------------------------------------------------------------------
-- Charges
-- -----------------------------------------------------------------------------

-- What a budget or a requisition line can be charged as, and the ledger account that is booked for it.
CREATE TABLE IF NOT EXISTS CHARGETYPES (
  CHARGETYPECODE    NVARCHAR(50) COLLATE NOCASE NOT NULL,
  LEDGERACCOUNTCODE NVARCHAR(50) COLLATE NOCASE,

  CONSTRAINT PK_CHARGETYPES PRIMARY KEY (CHARGETYPECODE),
  CONSTRAINT "CHARGETYPES.CHARGETYPECODE takes a text of at most 50 characters"
    CHECK (typeof(CHARGETYPECODE) = 'text' AND length(CHARGETYPECODE) <= 50),
  CONSTRAINT "CHARGETYPES.LEDGERACCOUNTCODE takes a text of at most 50 characters"
    CHECK (typeof(LEDGERACCOUNTCODE) IN ('null', 'text') AND length(LEDGERACCOUNTCODE) <= 50)
) WITHOUT ROWID;


-- The split of a requisition line over budgets. The key is the caller's number or else the next one.
CREATE TABLE IF NOT EXISTS CHARGELINES (
  CHARGELINEID          INTEGER CONSTRAINT PK_CHARGELINES PRIMARY KEY AUTOINCREMENT,
  REQUISITIONLINEID     INT,
  REQUISITIONLINENUMBER INT,
  REVISION              INT,
  ADMINOFFICE           NVARCHAR(50) COLLATE NOCASE,
  BUDGETCODE            NVARCHAR(50) COLLATE NOCASE,
  PERCENTAGESPLIT       FLOAT,

  CONSTRAINT "CHARGELINES.CHARGELINEID takes a whole number from -2147483648 to 2147483647"
    CHECK (CHARGELINEID BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "CHARGELINES.REQUISITIONLINEID takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(REQUISITIONLINEID) IN ('null', 'integer')
           AND REQUISITIONLINEID BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "CHARGELINES.REQUISITIONLINENUMBER takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(REQUISITIONLINENUMBER) IN ('null', 'integer')
           AND REQUISITIONLINENUMBER BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "CHARGELINES.REVISION takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(REVISION) IN ('null', 'integer') AND REVISION BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "CHARGELINES.ADMINOFFICE takes a text of at most 50 characters"
    CHECK (typeof(ADMINOFFICE) IN ('null', 'text') AND length(ADMINOFFICE) <= 50),
  CONSTRAINT "CHARGELINES.BUDGETCODE takes a text of at most 50 characters"
    CHECK (typeof(BUDGETCODE) IN ('null', 'text') AND length(BUDGETCODE) <= 50),
  CONSTRAINT "CHARGELINES.PERCENTAGESPLIT takes a finite number"
    CHECK (typeof(PERCENTAGESPLIT) IN ('null', 'real', 'integer') AND abs(PERCENTAGESPLIT) < 9e999)
);

-- All charge lines of a requisition line: they are read, replaced and deleted together.
CREATE INDEX IF NOT EXISTS IX_CHARGELINES_REQUISITIONLINE
  ON CHARGELINES (REQUISITIONLINEID, REQUISITIONLINENUMBER);


-- -----------------------------------------------------------------------------
-- Accounting
-- -----------------------------------------------------------------------------

-- The accounts that requisition lines are booked to. ACCOUNTTYPE is 1 for balance sheet, 2 profit and loss,
-- 3 miscellaneous, 4 expense. A dimension is 1 mandatory, 2 optional or 3 not used.
CREATE TABLE IF NOT EXISTS LEDGERACCOUNT (
  LEDGERACCOUNT NVARCHAR(50)  COLLATE NOCASE NOT NULL,
  DESCRIPTION   NVARCHAR(255) COLLATE NOCASE,
  ACCOUNTTYPE   INT,
  DATEFROM      DATETIME,
  DATETO        DATETIME,
  DIMENSION1    INT,
  DIMENSION2    INT,
  DIMENSION3    INT,
  DIMENSION4    INT,
  DIMENSION5    INT,

  CONSTRAINT PK_LEDGERACCOUNT PRIMARY KEY (LEDGERACCOUNT),
  CONSTRAINT "LEDGERACCOUNT.LEDGERACCOUNT takes a text of at most 50 characters"
    CHECK (typeof(LEDGERACCOUNT) = 'text' AND length(LEDGERACCOUNT) <= 50),
  CONSTRAINT "LEDGERACCOUNT.DESCRIPTION takes a text of at most 255 characters"
    CHECK (typeof(DESCRIPTION) IN ('null', 'text') AND length(DESCRIPTION) <= 255),
  CONSTRAINT "LEDGERACCOUNT.ACCOUNTTYPE takes a whole number from -32768 to 32767"
    CHECK (typeof(ACCOUNTTYPE) IN ('null', 'integer') AND ACCOUNTTYPE BETWEEN -32768 AND 32767),
  CONSTRAINT "LEDGERACCOUNT.DATEFROM takes a date in the form YYYY-MM-DDTHH:MM:SS"
    CHECK (typeof(DATEFROM) IN ('null', 'text') AND DATEFROM GLOB '????-??-??T??:??:??'
           AND strftime('%Y-%m-%dT%H:%M:%S', DATEFROM, '+0 days') IS DATEFROM),
  CONSTRAINT "LEDGERACCOUNT.DATETO takes a date in the form YYYY-MM-DDTHH:MM:SS"
    CHECK (typeof(DATETO) IN ('null', 'text') AND DATETO GLOB '????-??-??T??:??:??'
           AND strftime('%Y-%m-%dT%H:%M:%S', DATETO, '+0 days') IS DATETO),
  CONSTRAINT "LEDGERACCOUNT.DIMENSION1 takes a whole number from -32768 to 32767"
    CHECK (typeof(DIMENSION1) IN ('null', 'integer') AND DIMENSION1 BETWEEN -32768 AND 32767),
  CONSTRAINT "LEDGERACCOUNT.DIMENSION2 takes a whole number from -32768 to 32767"
    CHECK (typeof(DIMENSION2) IN ('null', 'integer') AND DIMENSION2 BETWEEN -32768 AND 32767),
  CONSTRAINT "LEDGERACCOUNT.DIMENSION3 takes a whole number from -32768 to 32767"
    CHECK (typeof(DIMENSION3) IN ('null', 'integer') AND DIMENSION3 BETWEEN -32768 AND 32767),
  CONSTRAINT "LEDGERACCOUNT.DIMENSION4 takes a whole number from -32768 to 32767"
    CHECK (typeof(DIMENSION4) IN ('null', 'integer') AND DIMENSION4 BETWEEN -32768 AND 32767),
  CONSTRAINT "LEDGERACCOUNT.DIMENSION5 takes a whole number from -32768 to 32767"
    CHECK (typeof(DIMENSION5) IN ('null', 'integer') AND DIMENSION5 BETWEEN -32768 AND 32767)
) WITHOUT ROWID;


-- The rules that choose an account. The database numbers them and never gives a number twice.
CREATE TABLE IF NOT EXISTS ACCOUNTINGRULE (
  ACCRULEID       INTEGER CONSTRAINT PK_ACCOUNTINGRULE PRIMARY KEY AUTOINCREMENT,
  RULEDESCRIPTION NVARCHAR(255) COLLATE NOCASE,
  SEQUENCENUMBER  INT,
  LEDGERACCOUNT   NVARCHAR(50)  COLLATE NOCASE,
  DATEFROM        DATETIME,
  DATETO          DATETIME,

  CONSTRAINT FK_ACCOUNTINGRULE_LEDGERACCOUNT
    FOREIGN KEY (LEDGERACCOUNT) REFERENCES LEDGERACCOUNT (LEDGERACCOUNT),
  CONSTRAINT "ACCOUNTINGRULE.ACCRULEID takes a whole number from -2147483648 to 2147483647"
    CHECK (ACCRULEID BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "ACCOUNTINGRULE.RULEDESCRIPTION takes a text of at most 255 characters"
    CHECK (typeof(RULEDESCRIPTION) IN ('null', 'text') AND length(RULEDESCRIPTION) <= 255),
  CONSTRAINT "ACCOUNTINGRULE.SEQUENCENUMBER takes a whole number from -32768 to 32767"
    CHECK (typeof(SEQUENCENUMBER) IN ('null', 'integer') AND SEQUENCENUMBER BETWEEN -32768 AND 32767),
  CONSTRAINT "ACCOUNTINGRULE.LEDGERACCOUNT takes a text of at most 50 characters"
    CHECK (typeof(LEDGERACCOUNT) IN ('null', 'text') AND length(LEDGERACCOUNT) <= 50),
  CONSTRAINT "ACCOUNTINGRULE.DATEFROM takes a date in the form YYYY-MM-DDTHH:MM:SS"
    CHECK (typeof(DATEFROM) IN ('null', 'text') AND DATEFROM GLOB '????-??-??T??:??:??'
           AND strftime('%Y-%m-%dT%H:%M:%S', DATEFROM, '+0 days') IS DATEFROM),
  CONSTRAINT "ACCOUNTINGRULE.DATETO takes a date in the form YYYY-MM-DDTHH:MM:SS"
    CHECK (typeof(DATETO) IN ('null', 'text') AND DATETO GLOB '????-??-??T??:??:??'
           AND strftime('%Y-%m-%dT%H:%M:%S', DATETO, '+0 days') IS DATETO)
);

-- The rules of an account: whether one can be deleted.
CREATE INDEX IF NOT EXISTS IX_ACCOUNTINGRULE_LEDGERACCOUNT
  ON ACCOUNTINGRULE (LEDGERACCOUNT);


-- The conditions of a rule, in the order of their numbers.
CREATE TABLE IF NOT EXISTS ACCOUNTINGRULELINE (
  ACCRULEID       INT NOT NULL,
  LINENUMBER      INT NOT NULL,
  LINEDESCRIPTION NVARCHAR(255)  COLLATE NOCASE,
  OPERATOR        INT,
  FIELDVALUE      NVARCHAR(2000) COLLATE NOCASE,

  CONSTRAINT PK_ACCOUNTINGRULELINE PRIMARY KEY (ACCRULEID, LINENUMBER),
  CONSTRAINT "ACCOUNTINGRULELINE.ACCRULEID takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(ACCRULEID) = 'integer' AND ACCRULEID BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "ACCOUNTINGRULELINE.LINENUMBER takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(LINENUMBER) = 'integer' AND LINENUMBER BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "ACCOUNTINGRULELINE.LINEDESCRIPTION takes a text of at most 255 characters"
    CHECK (typeof(LINEDESCRIPTION) IN ('null', 'text') AND length(LINEDESCRIPTION) <= 255),
  CONSTRAINT "ACCOUNTINGRULELINE.OPERATOR takes a whole number from -32768 to 32767"
    CHECK (typeof(OPERATOR) IN ('null', 'integer') AND OPERATOR BETWEEN -32768 AND 32767),
  CONSTRAINT "ACCOUNTINGRULELINE.FIELDVALUE takes a text of at most 2000 characters"
    CHECK (typeof(FIELDVALUE) IN ('null', 'text') AND length(FIELDVALUE) <= 2000)
) WITHOUT ROWID;


-- The names of the accounting dimensions, under DIMENSION1 to DIMENSION5. There is no key: a name may occur
-- twice, and the row that was written later counts.
CREATE TABLE IF NOT EXISTS ACCOUNTINGPARAMETER (
  PARAMETERNAME  NVARCHAR(50)   COLLATE NOCASE,
  PARAMETERVALUE NVARCHAR(2000) COLLATE NOCASE,

  CONSTRAINT "ACCOUNTINGPARAMETER.PARAMETERNAME takes a text of at most 50 characters"
    CHECK (typeof(PARAMETERNAME) IN ('null', 'text') AND length(PARAMETERNAME) <= 50),
  CONSTRAINT "ACCOUNTINGPARAMETER.PARAMETERVALUE takes a text of at most 2000 characters"
    CHECK (typeof(PARAMETERVALUE) IN ('null', 'text') AND length(PARAMETERVALUE) <= 2000)
);


-- -----------------------------------------------------------------------------
-- Settings and texts
-- -----------------------------------------------------------------------------

-- Settings of the requisition side. The ledger only reads them.
CREATE TABLE IF NOT EXISTS REQUISITIONPARAMETER (
  PARAMNAME  NVARCHAR(50)   COLLATE NOCASE NOT NULL,
  PARAMVALUE NVARCHAR(2000) COLLATE NOCASE,

  CONSTRAINT PK_REQUISITIONPARAMETER PRIMARY KEY (PARAMNAME),
  CONSTRAINT "REQUISITIONPARAMETER.PARAMNAME takes a text of at most 50 characters"
    CHECK (typeof(PARAMNAME) = 'text' AND length(PARAMNAME) <= 50),
  CONSTRAINT "REQUISITIONPARAMETER.PARAMVALUE takes a text of at most 2000 characters"
    CHECK (typeof(PARAMVALUE) IN ('null', 'text') AND length(PARAMVALUE) <= 2000)
) WITHOUT ROWID;


-- The texts that users read, one per language and label.
CREATE TABLE IF NOT EXISTS I18NTEXT (
  LOCALEID INT NOT NULL,
  LABEL    NVARCHAR(50) COLLATE NOCASE NOT NULL,
  Text     NVARCHAR(4000) COLLATE NOCASE,

  CONSTRAINT PK_I18NTEXT PRIMARY KEY (LOCALEID, LABEL),
  CONSTRAINT "I18NTEXT.LOCALEID takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(LOCALEID) = 'integer' AND LOCALEID BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "I18NTEXT.LABEL takes a text of at most 50 characters"
    CHECK (typeof(LABEL) = 'text' AND length(LABEL) <= 50),
  CONSTRAINT "I18NTEXT.Text takes a text of at most 4000 characters"
    CHECK (typeof(Text) IN ('null', 'text') AND length(Text) <= 4000)
) WITHOUT ROWID;


-- -----------------------------------------------------------------------------
-- The suite around the component
-- -----------------------------------------------------------------------------

-- The people who use the suite. LOCALEID names the language they read, see I18NTEXT.
CREATE TABLE IF NOT EXISTS SUITEUSER (
  USERID   NVARCHAR(50)  COLLATE NOCASE NOT NULL,
  FULLNAME NVARCHAR(50)  COLLATE NOCASE,
  EMAIL    NVARCHAR(255) COLLATE NOCASE,
  LOCALEID INT,

  CONSTRAINT PK_SUITEUSER PRIMARY KEY (USERID),
  CONSTRAINT "SUITEUSER.USERID takes a text of at most 50 characters"
    CHECK (typeof(USERID) = 'text' AND length(USERID) <= 50),
  CONSTRAINT "SUITEUSER.FULLNAME takes a text of at most 50 characters"
    CHECK (typeof(FULLNAME) IN ('null', 'text') AND length(FULLNAME) <= 50),
  CONSTRAINT "SUITEUSER.EMAIL takes a text of at most 255 characters"
    CHECK (typeof(EMAIL) IN ('null', 'text') AND length(EMAIL) <= 255),
  CONSTRAINT "SUITEUSER.LOCALEID takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(LOCALEID) IN ('null', 'integer') AND LOCALEID BETWEEN -2147483648 AND 2147483647)
) WITHOUT ROWID;


-- The administrative offices.
CREATE TABLE IF NOT EXISTS SUITEOFFICE (
  OFFICEDESCRIPTION NVARCHAR(50) COLLATE NOCASE NOT NULL,

  CONSTRAINT PK_SUITEOFFICE PRIMARY KEY (OFFICEDESCRIPTION),
  CONSTRAINT "SUITEOFFICE.OFFICEDESCRIPTION takes a text of at most 50 characters"
    CHECK (typeof(OFFICEDESCRIPTION) = 'text' AND length(OFFICEDESCRIPTION) <= 50)
) WITHOUT ROWID;


-- The currencies in use and the number of decimals of their amounts.
CREATE TABLE IF NOT EXISTS CURRENCY (
  CURRENCYCODE NVARCHAR(50) COLLATE NOCASE NOT NULL,
  DECIMALS     INT,

  CONSTRAINT PK_CURRENCY PRIMARY KEY (CURRENCYCODE),
  CONSTRAINT "CURRENCY.CURRENCYCODE takes a text of at most 50 characters"
    CHECK (typeof(CURRENCYCODE) = 'text' AND length(CURRENCYCODE) <= 50),
  CONSTRAINT "CURRENCY.DECIMALS takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(DECIMALS) IN ('null', 'integer') AND DECIMALS BETWEEN -2147483648 AND 2147483647)
) WITHOUT ROWID;


-- Units of the base currency for one unit of this currency, from a date until the next rate.
-- The key itself serves the reading of the newest rate on a date.
CREATE TABLE IF NOT EXISTS EXCHANGERATE (
  CURRENCYCODE NVARCHAR(50) COLLATE NOCASE NOT NULL,
  VALIDFROM    DATETIME NOT NULL,
  RATE         FLOAT,

  CONSTRAINT PK_EXCHANGERATE PRIMARY KEY (CURRENCYCODE, VALIDFROM),
  CONSTRAINT "EXCHANGERATE.CURRENCYCODE takes a text of at most 50 characters"
    CHECK (typeof(CURRENCYCODE) = 'text' AND length(CURRENCYCODE) <= 50),
  CONSTRAINT "EXCHANGERATE.VALIDFROM takes a date in the form YYYY-MM-DDTHH:MM:SS"
    CHECK (typeof(VALIDFROM) = 'text' AND VALIDFROM GLOB '????-??-??T??:??:??'
           AND strftime('%Y-%m-%dT%H:%M:%S', VALIDFROM, '+0 days') IS VALIDFROM),
  CONSTRAINT "EXCHANGERATE.RATE takes a finite number above 0"
    CHECK (typeof(RATE) IN ('null', 'real', 'integer') AND RATE > 0 AND RATE < 9e999)
) WITHOUT ROWID;


-- The requisition lines, as far as accounting has to know of them: the account each is booked to.
CREATE TABLE IF NOT EXISTS REQUISITIONLINE (
  REQUISITIONLINEID     INT NOT NULL,
  REQUISITIONLINENUMBER INT NOT NULL,
  LEDGERACCOUNT         NVARCHAR(50) COLLATE NOCASE,

  CONSTRAINT PK_REQUISITIONLINE PRIMARY KEY (REQUISITIONLINEID, REQUISITIONLINENUMBER),
  CONSTRAINT FK_REQUISITIONLINE_LEDGERACCOUNT
    FOREIGN KEY (LEDGERACCOUNT) REFERENCES LEDGERACCOUNT (LEDGERACCOUNT),
  CONSTRAINT "REQUISITIONLINE.REQUISITIONLINEID takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(REQUISITIONLINEID) = 'integer' AND REQUISITIONLINEID BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "REQUISITIONLINE.REQUISITIONLINENUMBER takes a whole number from -2147483648 to 2147483647"
    CHECK (typeof(REQUISITIONLINENUMBER) = 'integer'
           AND REQUISITIONLINENUMBER BETWEEN -2147483648 AND 2147483647),
  CONSTRAINT "REQUISITIONLINE.LEDGERACCOUNT takes a text of at most 50 characters"
    CHECK (typeof(LEDGERACCOUNT) IN ('null', 'text') AND length(LEDGERACCOUNT) <= 50)
) WITHOUT ROWID;

-- The requisition lines of an account: whether it can be deleted.
CREATE INDEX IF NOT EXISTS IX_REQUISITIONLINE_LEDGERACCOUNT
  ON REQUISITIONLINE (LEDGERACCOUNT);


-- SQLite does not say which foreign key it is that a statement violates; callers want to know. These triggers
-- look before the foreign keys do, and name them.
CREATE TRIGGER IF NOT EXISTS TR_LEDGERACCOUNT_DELETE
BEFORE DELETE ON LEDGERACCOUNT BEGIN
  SELECT RAISE(ABORT,
    'A ledger account that an accounting rule refers to stays (FK_ACCOUNTINGRULE_LEDGERACCOUNT)')
  WHERE EXISTS (SELECT 1 FROM ACCOUNTINGRULE WHERE LEDGERACCOUNT = OLD.LEDGERACCOUNT);
  SELECT RAISE(ABORT,
    'A ledger account that a requisition line refers to stays (FK_REQUISITIONLINE_LEDGERACCOUNT)')
  WHERE EXISTS (SELECT 1 FROM REQUISITIONLINE WHERE LEDGERACCOUNT = OLD.LEDGERACCOUNT);
END;

CREATE TRIGGER IF NOT EXISTS TR_LEDGERACCOUNT_UPDATE
BEFORE UPDATE OF LEDGERACCOUNT ON LEDGERACCOUNT
WHEN NEW.LEDGERACCOUNT <> OLD.LEDGERACCOUNT BEGIN
  SELECT RAISE(ABORT,
    'A ledger account that an accounting rule refers to stays (FK_ACCOUNTINGRULE_LEDGERACCOUNT)')
  WHERE EXISTS (SELECT 1 FROM ACCOUNTINGRULE WHERE LEDGERACCOUNT = OLD.LEDGERACCOUNT);
  SELECT RAISE(ABORT,
    'A ledger account that a requisition line refers to stays (FK_REQUISITIONLINE_LEDGERACCOUNT)')
  WHERE EXISTS (SELECT 1 FROM REQUISITIONLINE WHERE LEDGERACCOUNT = OLD.LEDGERACCOUNT);
END;

CREATE TRIGGER IF NOT EXISTS TR_ACCOUNTINGRULE_INSERT
BEFORE INSERT ON ACCOUNTINGRULE WHEN NEW.LEDGERACCOUNT IS NOT NULL BEGIN
  SELECT RAISE(ABORT,
    'ACCOUNTINGRULE.LEDGERACCOUNT takes a known ledger account (FK_ACCOUNTINGRULE_LEDGERACCOUNT)')
  WHERE NOT EXISTS (SELECT 1 FROM LEDGERACCOUNT WHERE LEDGERACCOUNT = NEW.LEDGERACCOUNT);
END;

CREATE TRIGGER IF NOT EXISTS TR_ACCOUNTINGRULE_UPDATE
BEFORE UPDATE OF LEDGERACCOUNT ON ACCOUNTINGRULE WHEN NEW.LEDGERACCOUNT IS NOT NULL BEGIN
  SELECT RAISE(ABORT,
    'ACCOUNTINGRULE.LEDGERACCOUNT takes a known ledger account (FK_ACCOUNTINGRULE_LEDGERACCOUNT)')
  WHERE NOT EXISTS (SELECT 1 FROM LEDGERACCOUNT WHERE LEDGERACCOUNT = NEW.LEDGERACCOUNT);
END;

CREATE TRIGGER IF NOT EXISTS TR_REQUISITIONLINE_INSERT
BEFORE INSERT ON REQUISITIONLINE WHEN NEW.LEDGERACCOUNT IS NOT NULL BEGIN
  SELECT RAISE(ABORT,
    'REQUISITIONLINE.LEDGERACCOUNT takes a known ledger account (FK_REQUISITIONLINE_LEDGERACCOUNT)')
  WHERE NOT EXISTS (SELECT 1 FROM LEDGERACCOUNT WHERE LEDGERACCOUNT = NEW.LEDGERACCOUNT);
END;

CREATE TRIGGER IF NOT EXISTS TR_REQUISITIONLINE_UPDATE
BEFORE UPDATE OF LEDGERACCOUNT ON REQUISITIONLINE WHEN NEW.LEDGERACCOUNT IS NOT NULL BEGIN
  SELECT RAISE(ABORT,
    'REQUISITIONLINE.LEDGERACCOUNT takes a known ledger account (FK_REQUISITIONLINE_LEDGERACCOUNT)')
  WHERE NOT EXISTS (SELECT 1 FROM LEDGERACCOUNT WHERE LEDGERACCOUNT = NEW.LEDGERACCOUNT);
END;
