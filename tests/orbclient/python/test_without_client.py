"""What the module does in an interpreter to which no host gave its client: it fails, and says so."""

import inspect
import types
import unittest

import orbClient

TYPES = [orbClient.connection, orbClient.crate, orbClient.module, orbClient.channel, orbClient.dataFrame]

# The methods that are more than an item.
CALLS = {"rawCommand", "disconnect", "getModules", "getCrates", "activateDataPassThrough", "getNextPassThroughMessage",
         "getPassThroughMessageList", "sendMessage", "sendMessageList"}


def methods(kind):
    """The names of the methods that a type adds to what every object has."""
    return [name for name, value in vars(kind).items() if isinstance(value, types.MethodDescriptorType)]


def filled(kind):
    """An object as a service would give it, but for the client."""
    made = kind()
    for name, value in dict(name="c1", connection="c1", line=0, address=2, module=2, index=5).items():
        if name in vars(kind):
            setattr(made, name, value)
    return made


class Functions(unittest.TestCase):
    def test_fail(self):
        for call in (lambda: orbClient.connect("c1", "127.0.0.1:8081"),
                     lambda: orbClient.connect("c1", "127.0.0.1:8081", "login", "password"),
                     lambda: orbClient.scriptConnect("c1", "127.0.0.1:8081", "script", "session", "login", "password"),
                     lambda: orbClient.getItem("c1", "Status.sessionId"),
                     lambda: orbClient.setItem("c1", "Control.wifi", "1"),
                     lambda: orbClient.findConnection("c1"),
                     lambda: orbClient.setDebugLevel(2),
                     lambda: orbClient.getVersion()):
            with self.subTest(inspect.getsource(call).strip()):
                self.assertEqual(call(), "error")

    def test_get_connections_raises(self):
        for arguments in ((), (0,), (1,)):
            with self.subTest(arguments), self.assertRaises(SystemError):
                orbClient.getConnections(*arguments)

    def test_refuse_arguments(self):
        for function, arguments in ((orbClient.connect, ("c1",)), (orbClient.connect, ("c1", 5)),
                                    (orbClient.scriptConnect, ("c1", "a", "b")), (orbClient.getItem, ("c1",)),
                                    (orbClient.setItem, ("c1", "a", 5)), (orbClient.getConnections, ("1",)),
                                    (orbClient.findConnection, ()), (orbClient.setDebugLevel, ("1",)),
                                    (orbClient.getVersion, (1,))):
            with self.subTest(function=function.__name__, arguments=arguments), self.assertRaises(TypeError):
                function(*arguments)


class Objects(unittest.TestCase):
    def test_getters_fail(self):
        for kind in TYPES[:4]:
            for made in (kind(), filled(kind)):
                for name in methods(kind):
                    if name.startswith("get") and name not in CALLS:
                        with self.subTest(kind=kind.__name__, method=name):
                            result = getattr(made, name)()
                            if isinstance(result, list):
                                self.assertEqual(len(result), 2)
                                self.assertNotEqual(result[0], result[0])
                                result = result[1]
                            self.assertEqual(result, "error")

    def test_setters_fail(self):
        for kind in TYPES[:4]:
            for made in (kind(), filled(kind)):
                for name in methods(kind):
                    if name.startswith("set"):
                        for value in (1, 2.5, "on", True, None, [1], {"a": 1}, made):
                            with self.subTest(kind=kind.__name__, method=name, value=type(value).__name__):
                                self.assertEqual(getattr(made, name)(value), "error")
                        with self.subTest(kind=kind.__name__, method=name), self.assertRaises(TypeError):
                            getattr(made, name)()

    def test_every_method_is_tried(self):
        for kind in TYPES[:4]:
            self.assertGreater(len(methods(kind)), 20)
            for name in methods(kind):
                self.assertTrue(name in CALLS or name.startswith(("get", "set")), name)
        self.assertEqual(methods(orbClient.dataFrame), [])

    def test_calls_of_a_connection(self):
        made = orbClient.connection("c1")
        frame = orbClient.dataFrame()
        self.assertEqual(made.disconnect(), "error")
        self.assertEqual(made.activateDataPassThrough(), "error")
        self.assertEqual(made.activateDataPassThrough("watch.py"), "error")
        self.assertEqual(made.getNextPassThroughMessage(), "error")
        self.assertEqual(made.sendMessage(frame), "error")
        self.assertEqual(made.sendMessageList([frame]), "error")
        self.assertEqual(made.getPassThroughMessageList(), [])
        self.assertEqual(made.getCrates(), [])
        self.assertEqual(made.getModules(), [])
        with self.assertRaises(SystemError):
            made.rawCommand("{}")

    def test_names_of_a_connection(self):
        self.assertEqual(str(orbClient.connection()), "")
        self.assertEqual(repr(orbClient.connection("c1")), "c1")
        self.assertEqual(orbClient.connection(name="h\u00e9").name, "h\u00e9")
        self.assertFalse(hasattr(orbClient.connection(), "name"))
        for arguments in ((5,), (None,), ("a", "b")):
            with self.subTest(arguments), self.assertRaises(TypeError):
                orbClient.connection(*arguments)
        with self.assertRaises(TypeError):
            orbClient.connection(names="c1")

    def test_texts(self):
        self.assertEqual(str(filled(orbClient.crate)), "0.2")
        self.assertEqual(str(filled(orbClient.module)), "0.2")
        self.assertEqual(str(filled(orbClient.channel)), "0.2.5")
        self.assertEqual(str(orbClient.dataFrame()), ":=")

    def test_subclasses_do_not_pass(self):
        for kind in TYPES[:4]:
            made = type("Derived", (kind,), {})()
            for name in methods(kind):
                arguments = (orbClient.dataFrame(),) if name in ("sendMessage", "sendMessageList") \
                    else ("{}",) if name == "rawCommand" else (1,) if name.startswith("set") else ()
                with self.subTest(kind=kind.__name__, method=name), self.assertRaises(SystemError):
                    getattr(made, name)(*arguments)

    def test_methods_of_one_type_refuse_another(self):
        for kind in TYPES[:4]:
            for other in TYPES:
                if other is not kind:
                    with self.subTest(kind=kind.__name__, other=other.__name__), self.assertRaises(TypeError):
                        getattr(kind, methods(kind)[-1])(other())


if __name__ == "__main__":
    unittest.main()
