# SPDX-License-Identifier: Apache-2.0
"""python3 -B -m unittest discover -s scripts/mutation -p '*_test.py'"""

import unittest

from equivalent import read_list
from mutants import mutants_of


def changes(text):
    """What the mutants of a text take away and put in its place."""
    return {(" ".join(mutant.removed), " ".join(mutant.added))
            for mutant in mutants_of("a.cpp", text)}


def changes_in_function(*lines):
    return changes("\n".join(["int f() {", *(f"  {line}" for line in lines), "}", ""]))


class Literals(unittest.TestCase):
    def test_a_number_becomes_its_neighbours(self):
        self.assertEqual(changes("int a = 5;\n"), {("int a = 5;", "int a = 6;"),
                                                   ("int a = 5;", "int a = 4;")})

    def test_a_text_changes_its_last_letter_and_no_format_directive(self):
        self.assertEqual(changes('char a[] = "to %s: %d";\n'),
                         {('char a[] = "to %s: %d";', 'char a[] = "tx %s: %d";')})

    def test_an_empty_text_is_filled(self):
        self.assertEqual(changes('char a[] = "";\n'), {('char a[] = "";', 'char a[] = "x";')})

    def test_comments_and_includes_stay(self):
        self.assertEqual(changes('#include "a.h"\n// 1 == 2\n'), set())


class Operators(unittest.TestCase):
    def test_a_comparison_is_turned(self):
        self.assertIn(("if (a == b) {", "if (a != b) {"),
                      changes_in_function("if (a == b) {", "  c();", "}"))

    def test_a_compound_condition_is_negated_and_its_junction_exchanged(self):
        found = changes_in_function("if (a || b) {", "  c();", "}")

        self.assertIn(("if (a || b) {", "if (!(a || b)) {"), found)
        self.assertIn(("if (a || b) {", "if (a && b) {"), found)

    def test_template_brackets_and_references_are_no_operators(self):
        self.assertEqual(changes("std::list<int> f(A &&a, const B &b);\n"), set())


class Statements(unittest.TestCase):
    def test_a_statement_is_dropped_and_lines_keep_their_numbers(self):
        text = "int f() {\n  a(b,\n    c);\n  return d;\n}\n"

        texts = [mutant.text for mutant in mutants_of("a.cpp", text)]

        self.assertEqual(texts, ["int f() {\n  ;\n\n  return d;\n}\n"])

    def test_the_statements_of_a_lambda_and_of_a_case_are_mutated_too(self):
        found = changes_in_function("g([](int a) {", "  b();", "});", "switch (c) {", "case D:",
                                    "  e();", "}")

        self.assertIn(("b();", ";"), found)
        self.assertIn(("e();", ";"), found)


    def test_what_the_coverage_leaves_out_stays(self):
        found = changes_in_function("if (a == b) { // GCOVR_EXCL_START: never.", "  c();",
                                    "} // GCOVR_EXCL_STOP", "throw d; // GCOVR_EXCL_LINE", "e();")

        self.assertEqual(found, {("e();", ";")})


class TheListOfEquivalentMutants(unittest.TestCase):
    def test_reads_what_is_printed(self):
        mutants = mutants_of("a.cpp", "int f() {\n  a();\n  #if 1\n  b(1);\n}\n")

        found = read_list("# The head.\n\n" + "\n".join(f"# Why.\n{mutant.describe()}\n"
                                                        for mutant in mutants))

        self.assertEqual(found, {mutant.key: "Why." for mutant in mutants})
