-- The tables of an installation on SQL Server 2019 or newer. The script may be run again: what exists stays
-- as it is. "talvex init --database" runs it; so does any tool of the server.
--
-- The database needs a default collation that compares without case and is in UTF-8, for example
-- Latin1_General_100_CI_AS_SC_UTF8: the component writes quoted texts without the prefix N, and in any other
-- collation letters outside its code page are lost before they reach a column. "talvex init" refuses such a
-- database. READ_COMMITTED_SNAPSHOT ON is recommended: without it readers wait for writers.
--
-- BUDGETLINES.ID and ACCOUNTINGRULE.ACCRULEID are identity columns. A text that is too long and a number out
-- of range are refused by the types.


-- -----------------------------------------------------------------------------
-- Budgets
-- -----------------------------------------------------------------------------

-- One row per budget. BUDGETTYPE is 1 for a standard budget and 2 for an aggregate one.
IF OBJECT_ID('BUDGET') IS NULL
CREATE TABLE BUDGET (
  BUDGETCODE        NVARCHAR(50) NOT NULL,
  BUDGETTYPE        INT NULL,
  CURRENCYCODE      NVARCHAR(50) NULL,
  OFFICEDESCRIPTION NVARCHAR(50) NULL,
  CHARGETYPECODE    NVARCHAR(50) NULL,
  USERID            NVARCHAR(50) NULL,
  APPROVEINBUDGET   INT NULL,
  BUDGETWARNING     FLOAT NULL,
  BUDGETDIMENSION1  NVARCHAR(2000) NULL CONSTRAINT DF_BUDGET_BUDGETDIMENSION1 DEFAULT '',
  BUDGETDIMENSION2  NVARCHAR(2000) NULL CONSTRAINT DF_BUDGET_BUDGETDIMENSION2 DEFAULT '',
  BUDGETDIMENSION3  NVARCHAR(2000) NULL CONSTRAINT DF_BUDGET_BUDGETDIMENSION3 DEFAULT '',
  CONSTRAINT PK_BUDGET PRIMARY KEY (BUDGETCODE)
);

-- The budgets of a holder, in the order of their codes.
IF NOT EXISTS (SELECT 1 FROM sys.indexes WHERE name = 'IX_BUDGET_USERID')
CREATE INDEX IX_BUDGET_USERID ON BUDGET (USERID, BUDGETCODE);

-- The candidates when a budget is chosen for a requisition line.
IF NOT EXISTS (SELECT 1 FROM sys.indexes WHERE name = 'IX_BUDGET_OFFICE_CHARGETYPE')
CREATE INDEX IX_BUDGET_OFFICE_CHARGETYPE ON BUDGET (OFFICEDESCRIPTION, CHARGETYPECODE, BUDGETCODE);


-- The periods of a budget. The database numbers them and never gives a number twice.
IF OBJECT_ID('BUDGETLINES') IS NULL
CREATE TABLE BUDGETLINES (
  ID                  INT NOT NULL IDENTITY(1, 1),
  BUDGETCODE          NVARCHAR(50) NULL,
  STARTDATE           DATETIME NULL,
  ENDDATE             DATETIME NULL,
  BUDGETAMNT          FLOAT NULL,
  USEDNOTAPPROVEDAMNT FLOAT NULL,
  USEDAPPROVEDAMNT    FLOAT NULL,
  USEDSENDAMNT        FLOAT NULL,
  USEDRECEIVEDAMNT    FLOAT NULL,
  USEDCLOSEDAMNT      FLOAT NULL,
  AVAILABLEAMNT       FLOAT NULL,
  AVAILABLEPERC       FLOAT NULL,
  CONSTRAINT PK_BUDGETLINES PRIMARY KEY (ID)
);

-- The line in force on a date. ID comes before the dates so that, where periods overlap, the first row is
-- always the line that was made first, as in a listing of the whole table.
IF NOT EXISTS (SELECT 1 FROM sys.indexes WHERE name = 'IX_BUDGETLINES_BUDGETCODE')
CREATE INDEX IX_BUDGETLINES_BUDGETCODE ON BUDGETLINES (BUDGETCODE, ID, STARTDATE, ENDDATE);


-- The hierarchy of budgets. No foreign keys: a child may be unknown here, and a loop can only be looked for.
IF OBJECT_ID('BUDGETRELATIONS') IS NULL
CREATE TABLE BUDGETRELATIONS (
  PARENTBUDGET NVARCHAR(50) NOT NULL,
  CHILDBUDGET  NVARCHAR(50) NOT NULL,
  CONSTRAINT PK_BUDGETRELATIONS PRIMARY KEY (PARENTBUDGET, CHILDBUDGET)
);

-- The parents of a budget, in the order of their codes: amounts climb the hierarchy in this order.
IF NOT EXISTS (SELECT 1 FROM sys.indexes WHERE name = 'IX_BUDGETRELATIONS_CHILDBUDGET')
CREATE INDEX IX_BUDGETRELATIONS_CHILDBUDGET ON BUDGETRELATIONS (CHILDBUDGET, PARENTBUDGET);


-- What the three dimensions of the budgets of an office stand for. The row without office serves all other
-- offices, so the key is nullable; a UNIQUE constraint takes Null once.
IF OBJECT_ID('BUDGETDIMENSIONTYPE') IS NULL
CREATE TABLE BUDGETDIMENSIONTYPE (
  OFFICEDESCRIPTION NVARCHAR(50) NULL,
  BUDGETDIMTYPE1    NVARCHAR(50) NULL,
  BUDGETDIMTYPE2    NVARCHAR(50) NULL,
  BUDGETDIMTYPE3    NVARCHAR(50) NULL,
  CONSTRAINT UQ_BUDGETDIMENSIONTYPE UNIQUE (OFFICEDESCRIPTION)
);


-- -----------------------------------------------------------------------------
-- Charges
-- -----------------------------------------------------------------------------

-- What a budget or a requisition line can be charged as, and the ledger account that is booked for it.
IF OBJECT_ID('CHARGETYPES') IS NULL
CREATE TABLE CHARGETYPES (
  CHARGETYPECODE    NVARCHAR(50) NOT NULL,
  LEDGERACCOUNTCODE NVARCHAR(50) NULL,
  CONSTRAINT PK_CHARGETYPES PRIMARY KEY (CHARGETYPECODE)
);


-- The split of a requisition line over budgets. The key is the caller's number or else the next of the
-- sequence, which does not follow the callers' numbers: where callers bring their own, start it above them.
IF OBJECT_ID('SQ_CHARGELINES') IS NULL
CREATE SEQUENCE SQ_CHARGELINES AS INT START WITH 1;

IF OBJECT_ID('CHARGELINES') IS NULL
CREATE TABLE CHARGELINES (
  CHARGELINEID          INT
    NOT NULL CONSTRAINT DF_CHARGELINES_CHARGELINEID DEFAULT (NEXT VALUE FOR SQ_CHARGELINES),
  REQUISITIONLINEID     INT NULL,
  REQUISITIONLINENUMBER INT NULL,
  REVISION              INT NULL,
  ADMINOFFICE           NVARCHAR(50) NULL,
  BUDGETCODE            NVARCHAR(50) NULL,
  PERCENTAGESPLIT       FLOAT NULL,
  CONSTRAINT PK_CHARGELINES PRIMARY KEY (CHARGELINEID)
);

-- All charge lines of a requisition line: they are read, replaced and deleted together.
IF NOT EXISTS (SELECT 1 FROM sys.indexes WHERE name = 'IX_CHARGELINES_REQUISITIONLINE')
CREATE INDEX IX_CHARGELINES_REQUISITIONLINE ON CHARGELINES (REQUISITIONLINEID, REQUISITIONLINENUMBER);


-- -----------------------------------------------------------------------------
-- Accounting
-- -----------------------------------------------------------------------------

-- The accounts that requisition lines are booked to. ACCOUNTTYPE is 1 for balance sheet, 2 profit and loss,
-- 3 miscellaneous, 4 expense. A dimension is 1 mandatory, 2 optional or 3 not used.
IF OBJECT_ID('LEDGERACCOUNT') IS NULL
CREATE TABLE LEDGERACCOUNT (
  LEDGERACCOUNT NVARCHAR(50) NOT NULL,
  DESCRIPTION   NVARCHAR(255) NULL,
  ACCOUNTTYPE   SMALLINT NULL,
  DATEFROM      DATETIME NULL,
  DATETO        DATETIME NULL,
  DIMENSION1    SMALLINT NULL,
  DIMENSION2    SMALLINT NULL,
  DIMENSION3    SMALLINT NULL,
  DIMENSION4    SMALLINT NULL,
  DIMENSION5    SMALLINT NULL,
  CONSTRAINT PK_LEDGERACCOUNT PRIMARY KEY (LEDGERACCOUNT)
);


-- The rules that choose an account. The database numbers them and never gives a number twice.
IF OBJECT_ID('ACCOUNTINGRULE') IS NULL
CREATE TABLE ACCOUNTINGRULE (
  ACCRULEID       INT NOT NULL IDENTITY(1, 1),
  RULEDESCRIPTION NVARCHAR(255) NULL,
  SEQUENCENUMBER  SMALLINT NULL,
  LEDGERACCOUNT   NVARCHAR(50) NULL,
  DATEFROM        DATETIME NULL,
  DATETO          DATETIME NULL,
  CONSTRAINT PK_ACCOUNTINGRULE PRIMARY KEY (ACCRULEID),
  CONSTRAINT FK_ACCOUNTINGRULE_LEDGERACCOUNT
    FOREIGN KEY (LEDGERACCOUNT) REFERENCES LEDGERACCOUNT (LEDGERACCOUNT)
);

-- The rules of an account: whether one can be deleted.
IF NOT EXISTS (SELECT 1 FROM sys.indexes WHERE name = 'IX_ACCOUNTINGRULE_LEDGERACCOUNT')
CREATE INDEX IX_ACCOUNTINGRULE_LEDGERACCOUNT ON ACCOUNTINGRULE (LEDGERACCOUNT);


-- The conditions of a rule, in the order of their numbers.
IF OBJECT_ID('ACCOUNTINGRULELINE') IS NULL
CREATE TABLE ACCOUNTINGRULELINE (
  ACCRULEID       INT NOT NULL,
  LINENUMBER      INT NOT NULL,
  LINEDESCRIPTION NVARCHAR(255) NULL,
  OPERATOR        SMALLINT NULL,
  FIELDVALUE      NVARCHAR(2000) NULL,
  CONSTRAINT PK_ACCOUNTINGRULELINE PRIMARY KEY (ACCRULEID, LINENUMBER)
);


-- The names of the accounting dimensions, under DIMENSION1 to DIMENSION5. There is no key: a name may occur
-- twice, and the row that was written later counts.
IF OBJECT_ID('ACCOUNTINGPARAMETER') IS NULL
CREATE TABLE ACCOUNTINGPARAMETER (
  PARAMETERNAME  NVARCHAR(50) NULL,
  PARAMETERVALUE NVARCHAR(2000) NULL
);


-- -----------------------------------------------------------------------------
-- Settings and texts
-- -----------------------------------------------------------------------------

-- Settings of the requisition side. The ledger only reads them.
IF OBJECT_ID('REQUISITIONPARAMETER') IS NULL
CREATE TABLE REQUISITIONPARAMETER (
  PARAMNAME  NVARCHAR(50) NOT NULL,
  PARAMVALUE NVARCHAR(2000) NULL,
  CONSTRAINT PK_REQUISITIONPARAMETER PRIMARY KEY (PARAMNAME)
);


-- The texts that users read, one per language and label.
IF OBJECT_ID('I18NTEXT') IS NULL
CREATE TABLE I18NTEXT (
  LOCALEID INT NOT NULL,
  LABEL    NVARCHAR(50) NOT NULL,
  Text     NVARCHAR(4000) NULL,
  CONSTRAINT PK_I18NTEXT PRIMARY KEY (LOCALEID, LABEL)
);


-- -----------------------------------------------------------------------------
-- The suite around the component
-- -----------------------------------------------------------------------------

-- The people who use the suite. LOCALEID names the language they read, see I18NTEXT.
IF OBJECT_ID('SUITEUSER') IS NULL
CREATE TABLE SUITEUSER (
  USERID   NVARCHAR(50) NOT NULL,
  FULLNAME NVARCHAR(50) NULL,
  EMAIL    NVARCHAR(255) NULL,
  LOCALEID INT NULL,
  CONSTRAINT PK_SUITEUSER PRIMARY KEY (USERID)
);


-- The administrative offices.
IF OBJECT_ID('SUITEOFFICE') IS NULL
CREATE TABLE SUITEOFFICE (
  OFFICEDESCRIPTION NVARCHAR(50) NOT NULL,
  CONSTRAINT PK_SUITEOFFICE PRIMARY KEY (OFFICEDESCRIPTION)
);


-- The currencies in use and the number of decimals of their amounts.
IF OBJECT_ID('CURRENCY') IS NULL
CREATE TABLE CURRENCY (
  CURRENCYCODE NVARCHAR(50) NOT NULL,
  DECIMALS     INT NULL,
  CONSTRAINT PK_CURRENCY PRIMARY KEY (CURRENCYCODE)
);


-- Units of the base currency for one unit of this currency, from a date until the next rate.
-- The key itself serves the reading of the newest rate on a date.
IF OBJECT_ID('EXCHANGERATE') IS NULL
CREATE TABLE EXCHANGERATE (
  CURRENCYCODE NVARCHAR(50) NOT NULL,
  VALIDFROM    DATETIME NOT NULL,
  RATE         FLOAT NULL,
  CONSTRAINT PK_EXCHANGERATE PRIMARY KEY (CURRENCYCODE, VALIDFROM),
  CONSTRAINT CK_EXCHANGERATE_RATE CHECK (RATE > 0)
);


-- The requisition lines, as far as accounting has to know of them: the account each is booked to.
IF OBJECT_ID('REQUISITIONLINE') IS NULL
CREATE TABLE REQUISITIONLINE (
  REQUISITIONLINEID     INT NOT NULL,
  REQUISITIONLINENUMBER INT NOT NULL,
  LEDGERACCOUNT         NVARCHAR(50) NULL,
  CONSTRAINT PK_REQUISITIONLINE PRIMARY KEY (REQUISITIONLINEID, REQUISITIONLINENUMBER),
  CONSTRAINT FK_REQUISITIONLINE_LEDGERACCOUNT
    FOREIGN KEY (LEDGERACCOUNT) REFERENCES LEDGERACCOUNT (LEDGERACCOUNT)
);

-- The requisition lines of an account: whether it can be deleted.
IF NOT EXISTS (SELECT 1 FROM sys.indexes WHERE name = 'IX_REQUISITIONLINE_LEDGERACCOUNT')
CREATE INDEX IX_REQUISITIONLINE_LEDGERACCOUNT ON REQUISITIONLINE (LEDGERACCOUNT);
