-- The tables of an installation on PostgreSQL 15 or newer. The script may be run again: what exists stays as
-- it is. It needs the extension citext and a database in UTF8; "talvex init --database" runs it as the user
-- who is to own the tables.
--
-- Texts compare without case. citext does so in =, LIKE, ORDER BY and unique keys alike; a nondeterministic
-- ICU collation, the other way, has no LIKE in this version. COLLATE "C" makes the order that of the
-- characters' numbers, capitals read as small letters, as in an embedded installation. Which letters beyond A
-- to Z are the same without case is up to the database's LC_CTYPE: none in a database made with LC_CTYPE 'C',
-- which is what the component itself takes codes to be.
--
-- A moment keeps its fraction of a second: timestamp(0) would round the last one before midnight, which others
-- write as 23:59:59.997, to the next day.
--
-- citext has no lengths, so they are constraints. The name of a constraint is what a caller gets to read; a
-- name has room for 63 characters.


-- -----------------------------------------------------------------------------
-- What the statements of the component need beside tables
-- -----------------------------------------------------------------------------

CREATE EXTENSION IF NOT EXISTS citext;

-- A floating-point number that is one: neither infinite nor "not a number", which is greater than all others.
DO $$
BEGIN
  IF to_regtype('talvex_amount') IS NULL THEN
    CREATE DOMAIN talvex_amount AS double precision
      CONSTRAINT "An amount takes a finite number" CHECK (VALUE > '-Infinity' AND VALUE < 'Infinity');
  END IF;
END $$;

-- The moment at which the statement began, to the second, in the session's time zone. The setting talvex.now
-- fixes it: a session whose clock stands still sets it when it begins.
CREATE OR REPLACE FUNCTION getdate() RETURNS timestamp LANGUAGE sql STABLE AS $$
  SELECT coalesce(nullif(current_setting('talvex.now', true), '')::timestamp,
                  date_trunc('second', statement_timestamp()::timestamp))
$$;

-- A date compared with a whole number compares with the day of that number, counted from 1900-01-01. An
-- unquoted 3/16/2026 is such a number: a quotient, 0.
DO $$
DECLARE
  sign text;
  name text;
BEGIN
  FOREACH sign IN ARRAY ARRAY['=', '<>', '<', '<=', '>', '>='] LOOP
    name := 'talvex_date_' || CASE sign WHEN '=' THEN 'eq' WHEN '<>' THEN 'ne' WHEN '<' THEN 'lt'
                                        WHEN '<=' THEN 'le' WHEN '>' THEN 'gt' ELSE 'ge' END;
    EXECUTE format('CREATE OR REPLACE FUNCTION %I(timestamp, integer) RETURNS boolean '
                   'LANGUAGE sql IMMUTABLE AS %L', name,
                   'SELECT $1 ' || sign || ' timestamp ''1900-01-01'' + $2 * interval ''1 day''');
    IF to_regoperator(sign || '(timestamp, integer)') IS NULL THEN
      EXECUTE format('CREATE OPERATOR %s (LEFTARG = timestamp, RIGHTARG = integer, FUNCTION = %I)',
                     sign, name);
    END IF;
  END LOOP;
END $$;

-- A sequence gives the next number above all that a table has had, those that a caller brought included.
CREATE OR REPLACE FUNCTION talvex_follow_number() RETURNS trigger LANGUAGE plpgsql AS $$
DECLARE
  sequence regclass := TG_ARGV[0];
  given bigint := to_jsonb(NEW) ->> TG_ARGV[1];
BEGIN
  IF given > coalesce(pg_sequence_last_value(sequence), 0) THEN
    PERFORM setval(sequence, given);
  END IF;
  RETURN NULL;
END $$;


-- -----------------------------------------------------------------------------
-- Budgets
-- -----------------------------------------------------------------------------

-- One row per budget. BUDGETTYPE is 1 for a standard budget and 2 for an aggregate one.
CREATE TABLE IF NOT EXISTS BUDGET (
  BUDGETCODE        citext COLLATE "C" NOT NULL,
  BUDGETTYPE        integer,
  CURRENCYCODE      citext COLLATE "C",
  OFFICEDESCRIPTION citext COLLATE "C",
  CHARGETYPECODE    citext COLLATE "C",
  USERID            citext COLLATE "C",
  APPROVEINBUDGET   integer,
  BUDGETWARNING     talvex_amount,
  BUDGETDIMENSION1  citext COLLATE "C" DEFAULT '',
  BUDGETDIMENSION2  citext COLLATE "C" DEFAULT '',
  BUDGETDIMENSION3  citext COLLATE "C" DEFAULT '',
  CONSTRAINT "PK_BUDGET" PRIMARY KEY (BUDGETCODE),
  CONSTRAINT "BUDGET.BUDGETCODE takes up to 50 characters"
    CHECK (char_length(BUDGETCODE) <= 50),
  CONSTRAINT "BUDGET.CURRENCYCODE takes up to 50 characters"
    CHECK (char_length(CURRENCYCODE) <= 50),
  CONSTRAINT "BUDGET.OFFICEDESCRIPTION takes up to 50 characters"
    CHECK (char_length(OFFICEDESCRIPTION) <= 50),
  CONSTRAINT "BUDGET.CHARGETYPECODE takes up to 50 characters"
    CHECK (char_length(CHARGETYPECODE) <= 50),
  CONSTRAINT "BUDGET.USERID takes up to 50 characters"
    CHECK (char_length(USERID) <= 50),
  CONSTRAINT "BUDGET.BUDGETDIMENSION1 takes up to 2000 characters"
    CHECK (char_length(BUDGETDIMENSION1) <= 2000),
  CONSTRAINT "BUDGET.BUDGETDIMENSION2 takes up to 2000 characters"
    CHECK (char_length(BUDGETDIMENSION2) <= 2000),
  CONSTRAINT "BUDGET.BUDGETDIMENSION3 takes up to 2000 characters"
    CHECK (char_length(BUDGETDIMENSION3) <= 2000)
);

-- The budgets of a holder, in the order of their codes.
CREATE INDEX IF NOT EXISTS IX_BUDGET_USERID
  ON BUDGET (USERID, BUDGETCODE);

-- The candidates when a budget is chosen for a requisition line.
CREATE INDEX IF NOT EXISTS IX_BUDGET_OFFICE_CHARGETYPE
  ON BUDGET (OFFICEDESCRIPTION, CHARGETYPECODE, BUDGETCODE);


-- The periods of a budget. The database numbers them and never gives a number twice.
CREATE SEQUENCE IF NOT EXISTS SQ_BUDGETLINES AS integer;

CREATE TABLE IF NOT EXISTS BUDGETLINES (
  ID                  integer NOT NULL DEFAULT nextval('SQ_BUDGETLINES'),
  BUDGETCODE          citext COLLATE "C",
  STARTDATE           timestamp,
  ENDDATE             timestamp,
  BUDGETAMNT          talvex_amount,
  USEDNOTAPPROVEDAMNT talvex_amount,
  USEDAPPROVEDAMNT    talvex_amount,
  USEDSENDAMNT        talvex_amount,
  USEDRECEIVEDAMNT    talvex_amount,
  USEDCLOSEDAMNT      talvex_amount,
  AVAILABLEAMNT       talvex_amount,
  AVAILABLEPERC       talvex_amount,
  CONSTRAINT "PK_BUDGETLINES" PRIMARY KEY (ID),
  CONSTRAINT "BUDGETLINES.BUDGETCODE takes up to 50 characters"
    CHECK (char_length(BUDGETCODE) <= 50)
);

CREATE OR REPLACE TRIGGER TR_BUDGETLINES_NUMBER AFTER INSERT ON BUDGETLINES
  FOR EACH ROW EXECUTE FUNCTION talvex_follow_number('SQ_BUDGETLINES', 'id');

-- The line in force on a date. ID comes before the dates so that, where periods overlap, the first row is
-- always the line that was made first, as in a listing of the whole table.
CREATE INDEX IF NOT EXISTS IX_BUDGETLINES_BUDGETCODE
  ON BUDGETLINES (BUDGETCODE, ID, STARTDATE, ENDDATE);


-- The hierarchy of budgets. No foreign keys: a child may be unknown here, and a loop can only be looked for.
CREATE TABLE IF NOT EXISTS BUDGETRELATIONS (
  PARENTBUDGET citext COLLATE "C" NOT NULL,
  CHILDBUDGET  citext COLLATE "C" NOT NULL,
  CONSTRAINT "PK_BUDGETRELATIONS" PRIMARY KEY (PARENTBUDGET, CHILDBUDGET),
  CONSTRAINT "BUDGETRELATIONS.PARENTBUDGET takes up to 50 characters"
    CHECK (char_length(PARENTBUDGET) <= 50),
  CONSTRAINT "BUDGETRELATIONS.CHILDBUDGET takes up to 50 characters"
    CHECK (char_length(CHILDBUDGET) <= 50)
);

-- The parents of a budget, in the order of their codes: amounts climb the hierarchy in this order.
CREATE INDEX IF NOT EXISTS IX_BUDGETRELATIONS_CHILDBUDGET
  ON BUDGETRELATIONS (CHILDBUDGET, PARENTBUDGET);


-- What the three dimensions of the budgets of an office stand for. The row without office serves all other
-- offices, so the key is nullable and may be Null once.
CREATE TABLE IF NOT EXISTS BUDGETDIMENSIONTYPE (
  OFFICEDESCRIPTION citext COLLATE "C",
  BUDGETDIMTYPE1    citext COLLATE "C",
  BUDGETDIMTYPE2    citext COLLATE "C",
  BUDGETDIMTYPE3    citext COLLATE "C",
  CONSTRAINT "UQ_BUDGETDIMENSIONTYPE" UNIQUE NULLS NOT DISTINCT (OFFICEDESCRIPTION),
  CONSTRAINT "BUDGETDIMENSIONTYPE.OFFICEDESCRIPTION takes up to 50 characters"
    CHECK (char_length(OFFICEDESCRIPTION) <= 50),
  CONSTRAINT "BUDGETDIMENSIONTYPE.BUDGETDIMTYPE1 takes up to 50 characters"
    CHECK (char_length(BUDGETDIMTYPE1) <= 50),
  CONSTRAINT "BUDGETDIMENSIONTYPE.BUDGETDIMTYPE2 takes up to 50 characters"
    CHECK (char_length(BUDGETDIMTYPE2) <= 50),
  CONSTRAINT "BUDGETDIMENSIONTYPE.BUDGETDIMTYPE3 takes up to 50 characters"
    CHECK (char_length(BUDGETDIMTYPE3) <= 50)
);


-- -----------------------------------------------------------------------------
-- Charges
-- -----------------------------------------------------------------------------

-- What a budget or a requisition line can be charged as, and the ledger account that is booked for it.
CREATE TABLE IF NOT EXISTS CHARGETYPES (
  CHARGETYPECODE    citext COLLATE "C" NOT NULL,
  LEDGERACCOUNTCODE citext COLLATE "C",
  CONSTRAINT "PK_CHARGETYPES" PRIMARY KEY (CHARGETYPECODE),
  CONSTRAINT "CHARGETYPES.CHARGETYPECODE takes up to 50 characters"
    CHECK (char_length(CHARGETYPECODE) <= 50),
  CONSTRAINT "CHARGETYPES.LEDGERACCOUNTCODE takes up to 50 characters"
    CHECK (char_length(LEDGERACCOUNTCODE) <= 50)
);


-- The split of a requisition line over budgets. The key is the caller's number or else the next one.
CREATE SEQUENCE IF NOT EXISTS SQ_CHARGELINES AS integer;

CREATE TABLE IF NOT EXISTS CHARGELINES (
  CHARGELINEID          integer NOT NULL DEFAULT nextval('SQ_CHARGELINES'),
  REQUISITIONLINEID     integer,
  REQUISITIONLINENUMBER integer,
  REVISION              integer,
  ADMINOFFICE           citext COLLATE "C",
  BUDGETCODE            citext COLLATE "C",
  PERCENTAGESPLIT       talvex_amount,
  CONSTRAINT "PK_CHARGELINES" PRIMARY KEY (CHARGELINEID),
  CONSTRAINT "CHARGELINES.ADMINOFFICE takes up to 50 characters"
    CHECK (char_length(ADMINOFFICE) <= 50),
  CONSTRAINT "CHARGELINES.BUDGETCODE takes up to 50 characters"
    CHECK (char_length(BUDGETCODE) <= 50)
);

CREATE OR REPLACE TRIGGER TR_CHARGELINES_NUMBER AFTER INSERT ON CHARGELINES
  FOR EACH ROW EXECUTE FUNCTION talvex_follow_number('SQ_CHARGELINES', 'chargelineid');

-- All charge lines of a requisition line: they are read, replaced and deleted together.
CREATE INDEX IF NOT EXISTS IX_CHARGELINES_REQUISITIONLINE
  ON CHARGELINES (REQUISITIONLINEID, REQUISITIONLINENUMBER);


-- -----------------------------------------------------------------------------
-- Accounting
-- -----------------------------------------------------------------------------

-- The accounts that requisition lines are booked to. ACCOUNTTYPE is 1 for balance sheet, 2 profit and loss,
-- 3 miscellaneous, 4 expense. A dimension is 1 mandatory, 2 optional or 3 not used.
CREATE TABLE IF NOT EXISTS LEDGERACCOUNT (
  LEDGERACCOUNT citext COLLATE "C" NOT NULL,
  DESCRIPTION   citext COLLATE "C",
  ACCOUNTTYPE   smallint,
  DATEFROM      timestamp,
  DATETO        timestamp,
  DIMENSION1    smallint,
  DIMENSION2    smallint,
  DIMENSION3    smallint,
  DIMENSION4    smallint,
  DIMENSION5    smallint,
  CONSTRAINT "PK_LEDGERACCOUNT" PRIMARY KEY (LEDGERACCOUNT),
  CONSTRAINT "LEDGERACCOUNT.LEDGERACCOUNT takes up to 50 characters"
    CHECK (char_length(LEDGERACCOUNT) <= 50),
  CONSTRAINT "LEDGERACCOUNT.DESCRIPTION takes up to 255 characters"
    CHECK (char_length(DESCRIPTION) <= 255)
);


-- The rules that choose an account. The database numbers them and never gives a number twice.
CREATE SEQUENCE IF NOT EXISTS SQ_ACCOUNTINGRULE AS integer;

CREATE TABLE IF NOT EXISTS ACCOUNTINGRULE (
  ACCRULEID       integer NOT NULL DEFAULT nextval('SQ_ACCOUNTINGRULE'),
  RULEDESCRIPTION citext COLLATE "C",
  SEQUENCENUMBER  smallint,
  LEDGERACCOUNT   citext COLLATE "C",
  DATEFROM        timestamp,
  DATETO          timestamp,
  CONSTRAINT "PK_ACCOUNTINGRULE" PRIMARY KEY (ACCRULEID),
  CONSTRAINT "FK_ACCOUNTINGRULE_LEDGERACCOUNT"
    FOREIGN KEY (LEDGERACCOUNT) REFERENCES LEDGERACCOUNT (LEDGERACCOUNT),
  CONSTRAINT "ACCOUNTINGRULE.RULEDESCRIPTION takes up to 255 characters"
    CHECK (char_length(RULEDESCRIPTION) <= 255),
  CONSTRAINT "ACCOUNTINGRULE.LEDGERACCOUNT takes up to 50 characters"
    CHECK (char_length(LEDGERACCOUNT) <= 50)
);

CREATE OR REPLACE TRIGGER TR_ACCOUNTINGRULE_NUMBER AFTER INSERT ON ACCOUNTINGRULE
  FOR EACH ROW EXECUTE FUNCTION talvex_follow_number('SQ_ACCOUNTINGRULE', 'accruleid');

-- The rules of an account: whether one can be deleted.
CREATE INDEX IF NOT EXISTS IX_ACCOUNTINGRULE_LEDGERACCOUNT
  ON ACCOUNTINGRULE (LEDGERACCOUNT);


-- The conditions of a rule, in the order of their numbers.
CREATE TABLE IF NOT EXISTS ACCOUNTINGRULELINE (
  ACCRULEID       integer NOT NULL,
  LINENUMBER      integer NOT NULL,
  LINEDESCRIPTION citext COLLATE "C",
  OPERATOR        smallint,
  FIELDVALUE      citext COLLATE "C",
  CONSTRAINT "PK_ACCOUNTINGRULELINE" PRIMARY KEY (ACCRULEID, LINENUMBER),
  CONSTRAINT "ACCOUNTINGRULELINE.LINEDESCRIPTION takes up to 255 characters"
    CHECK (char_length(LINEDESCRIPTION) <= 255),
  CONSTRAINT "ACCOUNTINGRULELINE.FIELDVALUE takes up to 2000 characters"
    CHECK (char_length(FIELDVALUE) <= 2000)
);


-- The names of the accounting dimensions, under DIMENSION1 to DIMENSION5. There is no key: a name may occur
-- twice, and the row that was written later counts.
CREATE TABLE IF NOT EXISTS ACCOUNTINGPARAMETER (
  PARAMETERNAME  citext COLLATE "C",
  PARAMETERVALUE citext COLLATE "C",
  CONSTRAINT "ACCOUNTINGPARAMETER.PARAMETERNAME takes up to 50 characters"
    CHECK (char_length(PARAMETERNAME) <= 50),
  CONSTRAINT "ACCOUNTINGPARAMETER.PARAMETERVALUE takes up to 2000 characters"
    CHECK (char_length(PARAMETERVALUE) <= 2000)
);


-- -----------------------------------------------------------------------------
-- Settings and texts
-- -----------------------------------------------------------------------------

-- Settings of the requisition side. The ledger only reads them.
CREATE TABLE IF NOT EXISTS REQUISITIONPARAMETER (
  PARAMNAME  citext COLLATE "C" NOT NULL,
  PARAMVALUE citext COLLATE "C",
  CONSTRAINT "PK_REQUISITIONPARAMETER" PRIMARY KEY (PARAMNAME),
  CONSTRAINT "REQUISITIONPARAMETER.PARAMNAME takes up to 50 characters"
    CHECK (char_length(PARAMNAME) <= 50),
  CONSTRAINT "REQUISITIONPARAMETER.PARAMVALUE takes up to 2000 characters"
    CHECK (char_length(PARAMVALUE) <= 2000)
);


-- The texts that users read, one per language and label.
CREATE TABLE IF NOT EXISTS I18NTEXT (
  LOCALEID integer NOT NULL,
  LABEL    citext COLLATE "C" NOT NULL,
  Text     citext COLLATE "C",
  CONSTRAINT "PK_I18NTEXT" PRIMARY KEY (LOCALEID, LABEL),
  CONSTRAINT "I18NTEXT.LABEL takes up to 50 characters"
    CHECK (char_length(LABEL) <= 50),
  CONSTRAINT "I18NTEXT.Text takes up to 4000 characters"
    CHECK (char_length(Text) <= 4000)
);


-- -----------------------------------------------------------------------------
-- The suite around the component
-- -----------------------------------------------------------------------------

-- The people who use the suite. LOCALEID names the language they read, see I18NTEXT.
CREATE TABLE IF NOT EXISTS SUITEUSER (
  USERID   citext COLLATE "C" NOT NULL,
  FULLNAME citext COLLATE "C",
  EMAIL    citext COLLATE "C",
  LOCALEID integer,
  CONSTRAINT "PK_SUITEUSER" PRIMARY KEY (USERID),
  CONSTRAINT "SUITEUSER.USERID takes up to 50 characters"
    CHECK (char_length(USERID) <= 50),
  CONSTRAINT "SUITEUSER.FULLNAME takes up to 50 characters"
    CHECK (char_length(FULLNAME) <= 50),
  CONSTRAINT "SUITEUSER.EMAIL takes up to 255 characters"
    CHECK (char_length(EMAIL) <= 255)
);


-- The administrative offices.
CREATE TABLE IF NOT EXISTS SUITEOFFICE (
  OFFICEDESCRIPTION citext COLLATE "C" NOT NULL,
  CONSTRAINT "PK_SUITEOFFICE" PRIMARY KEY (OFFICEDESCRIPTION),
  CONSTRAINT "SUITEOFFICE.OFFICEDESCRIPTION takes up to 50 characters"
    CHECK (char_length(OFFICEDESCRIPTION) <= 50)
);


-- The currencies in use and the number of decimals of their amounts.
CREATE TABLE IF NOT EXISTS CURRENCY (
  CURRENCYCODE citext COLLATE "C" NOT NULL,
  DECIMALS     integer,
  CONSTRAINT "PK_CURRENCY" PRIMARY KEY (CURRENCYCODE),
  CONSTRAINT "CURRENCY.CURRENCYCODE takes up to 50 characters"
    CHECK (char_length(CURRENCYCODE) <= 50)
);


-- Units of the base currency for one unit of this currency, from a date until the next rate.
-- The key itself serves the reading of the newest rate on a date.
CREATE TABLE IF NOT EXISTS EXCHANGERATE (
  CURRENCYCODE citext COLLATE "C" NOT NULL,
  VALIDFROM    timestamp NOT NULL,
  RATE         talvex_amount,
  CONSTRAINT "PK_EXCHANGERATE" PRIMARY KEY (CURRENCYCODE, VALIDFROM),
  CONSTRAINT "EXCHANGERATE.CURRENCYCODE takes up to 50 characters"
    CHECK (char_length(CURRENCYCODE) <= 50),
  CONSTRAINT "EXCHANGERATE.RATE takes a number above 0" CHECK (RATE > 0)
);


-- The requisition lines, as far as accounting has to know of them: the account each is booked to.
CREATE TABLE IF NOT EXISTS REQUISITIONLINE (
  REQUISITIONLINEID     integer NOT NULL,
  REQUISITIONLINENUMBER integer NOT NULL,
  LEDGERACCOUNT         citext COLLATE "C",
  CONSTRAINT "PK_REQUISITIONLINE" PRIMARY KEY (REQUISITIONLINEID, REQUISITIONLINENUMBER),
  CONSTRAINT "FK_REQUISITIONLINE_LEDGERACCOUNT"
    FOREIGN KEY (LEDGERACCOUNT) REFERENCES LEDGERACCOUNT (LEDGERACCOUNT),
  CONSTRAINT "REQUISITIONLINE.LEDGERACCOUNT takes up to 50 characters"
    CHECK (char_length(LEDGERACCOUNT) <= 50)
);

-- The requisition lines of an account: whether it can be deleted.
CREATE INDEX IF NOT EXISTS IX_REQUISITIONLINE_LEDGERACCOUNT
  ON REQUISITIONLINE (LEDGERACCOUNT);
