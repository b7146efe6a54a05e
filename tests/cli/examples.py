"""The examples do what they say."""

import subprocess
import sys
import unittest

from _talvex import PROGRAM, SOURCE_DIR, SampleTest, environment


class Examples(SampleTest):
    def approved(self):
        return self.sql("SELECT USEDAPPROVEDAMNT FROM BUDGETLINES WHERE ID = 5")[0][0]

    def post(self, budget, amount):
        program = SOURCE_DIR / "examples" / "post_through_gateway.py"
        return subprocess.run([sys.executable, program, PROGRAM, self.site, budget, amount],
                              env=environment(), encoding="utf-8", check=False,
                              capture_output=True, timeout=60)

    def test_a_posting_through_the_gateway_is_kept(self):
        before = self.approved()
        ran = self.post("IT-HW-AMS", "250")
        self.assertEqual((ran.returncode, ran.stdout), (0, "line 5 of IT-HW-AMS: committed\n"), ran.stderr)
        self.assertEqual(self.approved(), before + 250)

    def test_a_refused_posting_ends_with_its_description_and_is_undone(self):
        before = self.approved()
        ran = self.post("IT-HW-AMS", "1e300")
        self.assertEqual(ran.returncode, 1)
        self.assertIn("Overflow", ran.stderr)
        self.assertEqual(self.approved(), before)


if __name__ == "__main__":
    unittest.main()
