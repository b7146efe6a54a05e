"""The commands that only read, on the sample company, each behind the exit status that it answers with."""

from _talvex import DONE, NO

EXPORT = (DONE, "export", "A", "ZZZ")
LISTINGS = (
    (NO, "check", "IT-HW-AMS", "1", "EUR"),
    (NO, "check", "IT-HW-AMS", "1", "EUR", "--simulate"),
    (DONE, "select", "--all", "--office", "Amsterdam", "--charge-type", "SOFTWARE",
     "RequisitionDepartment=Finance", "RequisitionProject=ERP"),
    (DONE, "show", "IT-CLOUD", "--user", "h.moreau"),
    (DONE, "tree"),
    (DONE, "budgets", "--standard"),
    (DONE, "verify"),
    (DONE, "account", "--explain", "RequisitionChargeType=HARDWARE", "RequisitionAmount=1200",
     "RequisitionDepartment=IT", "RequisitionProject="),
    (DONE, "loops"),
    (DONE, "charge", "types"),
    (DONE, "charge", "show", "1001", "1"),
)
