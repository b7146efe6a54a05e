-- A small company to try things out on: offices in Amsterdam, Hamburg and Lyon, budgets for 2026 and 2027.
-- The totals of every group are those of the budgets below it, each amount at the rate of its day.

INSERT INTO SUITEOFFICE (OFFICEDESCRIPTION) VALUES
  ('Amsterdam'),
  ('Hamburg'),
  ('Lyon');

-- Readers of English (1033), Dutch (1043), German (1031) and French (1036).
INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES
  ('d.reed',    'Daniel Reed',    'd.reed@example.com',    1033),
  ('e.clarke',  'Emma Clarke',    'e.clarke@example.com',  1033),
  ('h.moreau',  'Hélène Moreau',  'h.moreau@example.com',  1036),
  ('j.vogel',   'Jürgen Vogel',   'j.vogel@example.com',   1031),
  ('p.deboer',  'Pieter de Boer', 'p.deboer@example.com',  1043),
  ('s.vermeer', 'Sanne Vermeer',  's.vermeer@example.com', 1043);

INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES
  ('EUR', 2),
  ('GBP', 2),
  ('JPY', 0),
  ('USD', 2);

-- Euros for one unit of the currency.
INSERT INTO EXCHANGERATE (CURRENCYCODE, VALIDFROM, RATE) VALUES
  ('EUR', '2025-01-01T00:00:00', 1),
  ('EUR', '2026-07-01T00:00:00', 1),
  ('GBP', '2025-01-01T00:00:00', 1.19),
  ('GBP', '2026-07-01T00:00:00', 1.15),
  ('JPY', '2025-01-01T00:00:00', 0.0062),
  ('JPY', '2026-07-01T00:00:00', 0.0058),
  ('USD', '2025-01-01T00:00:00', 0.92),
  ('USD', '2026-07-01T00:00:00', 0.88);

INSERT INTO CHARGETYPES (CHARGETYPECODE, LEDGERACCOUNTCODE) VALUES
  ('CLOUD',      '4330'),
  ('FACILITIES', '4200'),
  ('GENERAL',    '4900'),
  ('HARDWARE',   '4310'),
  ('MARKETING',  '4500'),
  ('SOFTWARE',   '4320'),
  ('TRAINING',   '4130'),
  ('TRAVEL',     '4410');

-- The properties of a requisition that the dimensions are compared with. The last row is for Lyon, which has
-- none of its own.
INSERT INTO BUDGETDIMENSIONTYPE (OFFICEDESCRIPTION, BUDGETDIMTYPE1, BUDGETDIMTYPE2, BUDGETDIMTYPE3) VALUES
  ('Amsterdam', 'RequisitionDepartment', 'RequisitionProject', NULL),
  ('Hamburg',   'RequisitionDepartment', NULL,                 NULL),
  (NULL,        'RequisitionProject',    NULL,                 NULL);

-- Groups are aggregate budgets (2), the rest are standard budgets (1).
INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE, USERID,
                    APPROVEINBUDGET, BUDGETWARNING,
                    BUDGETDIMENSION1, BUDGETDIMENSION2, BUDGETDIMENSION3) VALUES
  ('COMPANY',      2, 'EUR', NULL,        'GENERAL',    'd.reed',    1,   10, '',      '',    ''),
  ('IT',           2, 'EUR', NULL,        'GENERAL',    's.vermeer', 0, 12.5, '',      '',    ''),
  ('IT-CLOUD',     1, 'USD', 'Amsterdam', 'CLOUD',      'p.deboer',  0,   10, '',      '',    ''),
  ('IT-ERP-AMS',   1, 'EUR', 'Amsterdam', 'SOFTWARE',   's.vermeer', 1,   25, '',      'ERP', ''),
  ('IT-HW-AMS',    1, 'EUR', 'Amsterdam', 'HARDWARE',   'p.deboer',  0,   10, '',      '',    ''),
  ('IT-SW-AMS',    1, 'EUR', 'Amsterdam', 'SOFTWARE',   'p.deboer',  0, 12.5, '',      '',    ''),
  ('IT-TRAINING',  1, 'EUR', NULL,        'TRAINING',   's.vermeer', 1,   25, '',      '',    ''),
  ('MARKETING',    2, 'EUR', NULL,        'MARKETING',  'e.clarke',  0,   25, '',      '',    ''),
  ('MKT-EVENTS',   1, 'EUR', 'Lyon',      'MARKETING',  'h.moreau',  0,   10, '',      '',    ''),
  ('MKT-JAPAN',    1, 'JPY', 'Lyon',      'MARKETING',  NULL,        0, NULL, 'Japan', '',    ''),
  ('OPERATIONS',   2, 'EUR', NULL,        'FACILITIES', 'j.vogel',   1,   10, '',      '',    ''),
  ('OPS-HAM',      1, 'EUR', 'Hamburg',   'FACILITIES', 'j.vogel',   0, 12.5, '',      '',    ''),
  ('OPS-LYON',     1, 'EUR', 'Lyon',      'FACILITIES', 'h.moreau',  0,   25, '',      '',    ''),
  ('STAFF',        2, 'EUR', NULL,        'GENERAL',    NULL,        0, NULL, '',      '',    ''),
  ('STAFF-TRAVEL', 1, 'EUR', NULL,        'TRAVEL',     'd.reed',    0,   10, '',      '',    '');

-- IT-TRAINING is paid by IT and counted under STAFF as well: the company sees it once.
INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES
  ('COMPANY',    'IT'),
  ('COMPANY',    'MARKETING'),
  ('COMPANY',    'OPERATIONS'),
  ('COMPANY',    'STAFF'),
  ('IT',         'IT-CLOUD'),
  ('IT',         'IT-ERP-AMS'),
  ('IT',         'IT-HW-AMS'),
  ('IT',         'IT-SW-AMS'),
  ('IT',         'IT-TRAINING'),
  ('MARKETING',  'MKT-EVENTS'),
  ('MARKETING',  'MKT-JAPAN'),
  ('OPERATIONS', 'OPS-HAM'),
  ('OPERATIONS', 'OPS-LYON'),
  ('STAFF',      'IT-TRAINING'),
  ('STAFF',      'STAFF-TRAVEL');

-- The current year. All amounts are in the currency of the budget.
INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT,
                         USEDNOTAPPROVEDAMNT, USEDAPPROVEDAMNT, USEDSENDAMNT,
                         USEDRECEIVEDAMNT, USEDCLOSEDAMNT,
                         AVAILABLEAMNT, AVAILABLEPERC) VALUES
  ('COMPANY',      '2026-01-01T00:00:00', '2026-12-31T00:00:00',
      560000, 22850,  19610,  80400,  27490,  165640,  244010, 0.4357),
  ('IT',           '2026-01-01T00:00:00', '2026-12-31T00:00:00',
      330000, 19950,  10400,  63300,  17000,  102700,  116650, 0.3535),
  ('IT-CLOUD',     '2026-01-01T00:00:00', '2026-12-31T00:00:00',
       90000,     0,      0,   7500,   7500,   52500,   22500,   0.25),
  ('IT-ERP-AMS',   '2026-01-01T00:00:00', '2026-12-31T00:00:00',
      120000, 18000,      0,  40000,      0,   32000,   30000,   0.25),
  ('IT-HW-AMS',    '2026-01-01T00:00:00', '2026-12-31T00:00:00',
       60000,  1500,   6000,   9500,   8000,    5000,   30000,    0.5),
  ('IT-SW-AMS',    '2026-01-01T00:00:00', '2026-12-31T00:00:00',
       48000,     0,   3200,   6400,   2400,   15000,   21000, 0.4375),
  ('IT-TRAINING',  '2026-01-01T00:00:00', '2026-12-31T00:00:00',
       15000,   450,   1200,    800,      0,    3000,    9550, 0.6367),
  ('MARKETING',    '2026-01-01T00:00:00', '2026-12-31T00:00:00',
       82000,  2000,   7110,   7850,   1740,   21440,   41860, 0.5105),
  ('MKT-EVENTS',   '2026-01-01T00:00:00', '2026-12-31T00:00:00',
       40000,  2000,   4500,   3500,      0,   14000,   16000,    0.4),
  ('MKT-JAPAN',    '2026-01-01T00:00:00', '2026-12-31T00:00:00',
     6000000,     0, 450000, 750000, 300000, 1200000, 3300000,   0.55),
  ('OPERATIONS',   '2026-01-01T00:00:00', '2026-12-31T00:00:00',
      110000,     0,      0,   7500,   7500,   30000,   65000, 0.5909),
  ('OPS-HAM',      '2026-01-01T00:00:00', '2026-12-31T00:00:00',
       75000,     0,      0,   7500,   7500,   30000,   30000,    0.4),
  ('STAFF',        '2026-01-01T00:00:00', '2026-12-31T00:00:00',
       50000,  1350,   3300,   2550,   1250,   14500,   27050,  0.541),
  ('STAFF-TRAVEL', '2026-01-01T00:00:00', '2026-12-31T00:00:00',
       35000,   900,   2100,   1750,   1250,   11500,   17500,    0.5);

-- The year to come: nothing is used yet, and a total that was never touched is Null.
INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, AVAILABLEAMNT, AVAILABLEPERC) VALUES
  ('COMPANY',      '2027-01-01T00:00:00', '2027-12-31T00:00:00',  580000,  580000, 1),
  ('IT',           '2027-01-01T00:00:00', '2027-12-31T00:00:00',  335000,  335000, 1),
  ('IT-CLOUD',     '2027-01-01T00:00:00', '2027-12-31T00:00:00',   98000,   98000, 1),
  ('IT-ERP-AMS',   '2027-01-01T00:00:00', '2027-12-31T00:00:00',   80000,   80000, 1),
  ('IT-HW-AMS',    '2027-01-01T00:00:00', '2027-12-31T00:00:00',   70000,   70000, 1),
  ('IT-SW-AMS',    '2027-01-01T00:00:00', '2027-12-31T00:00:00',   52000,   52000, 1),
  ('IT-TRAINING',  '2027-01-01T00:00:00', '2027-12-31T00:00:00',   18000,   18000, 1),
  ('MARKETING',    '2027-01-01T00:00:00', '2027-12-31T00:00:00',   90000,   90000, 1),
  ('MKT-EVENTS',   '2027-01-01T00:00:00', '2027-12-31T00:00:00',   45000,   45000, 1),
  ('MKT-JAPAN',    '2027-01-01T00:00:00', '2027-12-31T00:00:00', 6500000, 6500000, 1),
  ('OPERATIONS',   '2027-01-01T00:00:00', '2027-12-31T00:00:00',  115000,  115000, 1),
  ('OPS-HAM',      '2027-01-01T00:00:00', '2027-12-31T00:00:00',   78000,   78000, 1),
  ('STAFF',        '2027-01-01T00:00:00', '2027-12-31T00:00:00',   55000,   55000, 1),
  ('STAFF-TRAVEL', '2027-01-01T00:00:00', '2027-12-31T00:00:00',   36000,   36000, 1);

-- The lease in Lyon runs until further notice. A line without an end date takes no postings.
INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, AVAILABLEAMNT, AVAILABLEPERC) VALUES
  ('OPS-LYON', '2026-01-01T00:00:00', NULL, 30000, 30000, 1);

-- Three requisition lines, the second one split over two budgets.
INSERT INTO CHARGELINES (REQUISITIONLINEID, REQUISITIONLINENUMBER, REVISION, ADMINOFFICE, BUDGETCODE,
                         PERCENTAGESPLIT) VALUES
  (5001, 1, 0, 'Amsterdam', 'IT-HW-AMS',  100),
  (5002, 1, 1, 'Amsterdam', 'IT-ERP-AMS', 62.5),
  (5002, 1, 1, 'Amsterdam', 'IT-SW-AMS',  37.5),
  (5003, 1, 0, 'Hamburg',   'OPS-HAM',    100);

INSERT INTO REQUISITIONPARAMETER (PARAMNAME, PARAMVALUE) VALUES
  ('SendEmailToBudgetHolderForBudgetWarning', 'True');

-- The accounts behind the charge types, and one on the balance sheet for what is worth capitalising. The
-- first dimension is the department, the second one the project.
INSERT INTO LEDGERACCOUNT (LEDGERACCOUNT, DESCRIPTION, ACCOUNTTYPE, DATEFROM, DATETO,
                           DIMENSION1, DIMENSION2, DIMENSION3, DIMENSION4, DIMENSION5) VALUES
  ('0310', 'Computer equipment',      1, NULL,                  NULL,                  1, 1, 3, 3, 3),
  ('4130', 'Training',                4, NULL,                  NULL,                  1, 3, 3, 3, 3),
  ('4200', 'Housing and facilities',  4, NULL,                  NULL,                  2, 3, 3, 3, 3),
  ('4310', 'Small computer hardware', 4, NULL,                  NULL,                  2, 2, 3, 3, 3),
  ('4320', 'Software licences',       4, NULL,                  NULL,                  2, 2, 3, 3, 3),
  ('4325', 'Software for projects',   4, '2026-01-01T00:00:00', NULL,                  2, 1, 3, 3, 3),
  ('4330', 'Cloud services',          4, '2024-01-01T00:00:00', NULL,                  1, 3, 3, 3, 3),
  ('4400', 'Travel until 2025',       4, NULL,                  '2025-12-31T23:59:59', 2, 3, 3, 3, 3),
  ('4410', 'Travel',                  4, '2026-01-01T00:00:00', NULL,                  2, 3, 3, 3, 3),
  ('4500', 'Marketing and events',    4, NULL,                  NULL,                  1, 3, 3, 3, 3),
  ('4900', 'Other expenses',          3, NULL,                  NULL,                  3, 3, 3, 3, 3);

INSERT INTO ACCOUNTINGPARAMETER (PARAMETERNAME, PARAMETERVALUE) VALUES
  ('DIMENSION1', 'RequisitionDepartment'),
  ('DIMENSION2', 'RequisitionProject'),
  ('DIMENSION3', ''),
  ('DIMENSION4', ''),
  ('DIMENSION5', '');

-- Of the rules whose lines all hold, the lowest sequence number decides.
INSERT INTO ACCOUNTINGRULE (ACCRULEID, RULEDESCRIPTION, SEQUENCENUMBER, LEDGERACCOUNT,
                            DATEFROM, DATETO) VALUES
  (1,  'Everything else',               900, '4900', NULL,                  NULL),
  (2,  'Equipment from 5,000 on',        10, '0310', NULL,                  NULL),
  (3,  'Hardware',                       20, '4310', NULL,                  NULL),
  (4,  'Software that a project needs',  30, '4325', NULL,                  NULL),
  (5,  'Software',                       40, '4320', NULL,                  NULL),
  (6,  'Cloud',                          50, '4330', NULL,                  NULL),
  (7,  'Travel, old account',            60, '4400', NULL,                  '2025-12-31T23:59:59'),
  (8,  'Travel',                         61, '4410', '2026-01-01T00:00:00', NULL),
  (9,  'Training',                       70, '4130', NULL,                  NULL),
  (10, 'Marketing departments',          80, '4500', NULL,                  NULL),
  (11, 'Facilities, support excepted',   90, '4200', NULL,                  NULL);

-- The operators: 1 Less, 2 LessEqual, 3 Greater, 4 GreaterEqual, 5 Equal, 6 NotEqual, 7 Contains, 8 Inside,
-- 9 NotIn.
INSERT INTO ACCOUNTINGRULELINE (ACCRULEID, LINENUMBER, LINEDESCRIPTION, OPERATOR, FIELDVALUE) VALUES
  (1,  1, 'RequisitionAmount',     6, '0'),
  (2,  1, 'RequisitionChargeType', 5, 'HARDWARE'),
  (2,  2, 'RequisitionAmount',     4, '5000'),
  (3,  1, 'RequisitionChargeType', 5, 'HARDWARE'),
  (4,  1, 'RequisitionChargeType', 8, 'SOFTWARE;CLOUD'),
  (4,  2, 'RequisitionProject',    6, ''),
  (5,  1, 'RequisitionChargeType', 5, 'SOFTWARE'),
  (6,  1, 'RequisitionChargeType', 5, 'CLOUD'),
  (7,  1, 'RequisitionChargeType', 5, 'TRAVEL'),
  (8,  1, 'RequisitionChargeType', 5, 'TRAVEL'),
  (9,  1, 'RequisitionChargeType', 5, 'TRAINING'),
  (10, 1, 'RequisitionDepartment', 7, 'Marketing'),
  (11, 1, 'RequisitionChargeType', 5, 'FACILITIES'),
  (11, 2, 'RequisitionDepartment', 9, 'Support;Helpdesk');

INSERT INTO REQUISITIONLINE (REQUISITIONLINEID, REQUISITIONLINENUMBER, LEDGERACCOUNT) VALUES
  (5001, 1, '4310'),
  (5002, 1, '4320'),
  (5003, 1, '4200');
