"""The module as a plain interpreter imports it: under both of its names, and documented."""

import os
import pickle
import pydoc
import subprocess
import sys
import unittest

import orbClient
import orbClientPython_3_for_ORB

FUNCTIONS = ["connect", "scriptConnect", "getItem", "setItem", "getConnections", "findConnection", "setDebugLevel",
             "getVersion"]
TYPES = ["connection", "crate", "module", "channel", "dataFrame"]


def run(code, *options):
    """What a new interpreter writes for the code; fails the test when it does not end well."""
    done = subprocess.run([sys.executable, "-B", *options, "-c", code], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, universal_newlines=True, env=dict(os.environ, PAGER="cat"))
    if done.returncode != 0 or done.stderr:
        raise AssertionError("ended with %d\n%s" % (done.returncode, done.stderr))
    return done.stdout


class Import(unittest.TestCase):
    def test_both_names_are_one_module(self):
        self.assertIs(orbClient, orbClientPython_3_for_ORB)
        self.assertIs(sys.modules["orbClient"], sys.modules["orbClientPython_3_for_ORB"])

    def test_each_name_works_alone_and_in_either_order(self):
        short, long = "orbClient", "orbClientPython_3_for_ORB"
        report = "print([n for n in vars(m) if n[0] != '_'], m.getVersion(), m.channel(), m.__name__, m.channel)"
        expected = "%s error .. orbClientPython_3 <class 'orbClient.channel'>\n" % (FUNCTIONS + TYPES)
        for code in ["import %s as m" % short, "import %s as m" % long, "import %s, %s as m" % (short, long),
                     "import %s, %s as m" % (long, short), "m = __import__('%s')" % short,
                     "import importlib; m = importlib.import_module('%s')" % short]:
            with self.subTest(code):
                self.assertEqual(run(code + "\n" + report), expected)

    def test_from_import(self):
        self.assertEqual(run("from orbClient import *\nprint(getVersion(), dataFrame())"), "error :=\n")
        self.assertEqual(run("from orbClientPython_3_for_ORB import findConnection\nprint(findConnection('c1'))"),
                         "error\n")

    def test_import_without_warnings_and_with_checks(self):
        for options in (["-W", "error"], ["-X", "dev"], ["-OO"], ["-bb"]):
            with self.subTest(options):
                self.assertEqual(run("import orbClient\nprint(orbClient.connection('c1'))", *options), "c1\n")

    def test_types_are_found_by_their_names(self):
        for name in TYPES:
            with self.subTest(name):
                kind = getattr(orbClient, name)
                self.assertEqual(kind.__module__, "orbClient")
                self.assertEqual(kind.__qualname__, name)
                self.assertIs(pickle.loads(pickle.dumps(kind)), kind)

    def test_threads_beside_each_other(self):
        code = "\n".join(["import orbClient, threading",
                          "results = []",
                          "def use():",
                          "    made = orbClient.connection('c1')",
                          "    results.append((made.setControlReboot(1), str(made), orbClient.getVersion()))",
                          "threads = [threading.Thread(target=use) for _ in range(8)]",
                          "for t in threads: t.start()",
                          "for t in threads: t.join()",
                          "print(len(results), set(results))"])
        self.assertEqual(run(code), "8 {('error', 'c1', 'error')}\n")


class Help(unittest.TestCase):
    def test_help_of_the_module(self):
        for name in ("orbClient", "orbClientPython_3_for_ORB"):
            with self.subTest(name):
                text = run("import %s as m\nhelp(m)" % name)
                for word in FUNCTIONS + TYPES:
                    self.assertIn(word, text)
                for kind in TYPES:
                    self.assertIn("class %s(" % kind, text)
                self.assertIn("corrsponding to <connection name> if it exists.", text)
                self.assertIn("This function returns the version of the Python module.", text)

    def test_help_of_everything_in_it(self):
        for name in FUNCTIONS + TYPES:
            subject = getattr(orbClient, name)
            with self.subTest(name):
                self.assertIn(name, pydoc.render_doc(subject, renderer=pydoc.plaintext))
            members = [m for m in vars(subject) if not m.startswith("_")] if name in TYPES else []
            for member in members:
                with self.subTest(name + "." + member):
                    self.assertIn(member, pydoc.render_doc(getattr(subject, member), renderer=pydoc.plaintext))

    def test_functions_have_no_argument_names(self):
        for name in FUNCTIONS:
            with self.subTest(name):
                self.assertIsNone(getattr(orbClient, name).__text_signature__)


if __name__ == "__main__":
    unittest.main()
