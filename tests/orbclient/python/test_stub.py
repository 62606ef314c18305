"""The stub file beside the module says what the module has: name by name, in both directions."""

import ast
import os
import types
import unittest

import orbClient

STUB = os.path.join(os.path.dirname(orbClient.__file__), "orbClient.pyi")
OBJECT_TYPES = ("connection", "crate", "module", "channel", "dataFrame")

with open(STUB, encoding="utf-8") as stub_file:
    TREE = ast.parse(stub_file.read(), STUB)

FUNCTIONS = {node.name: node for node in TREE.body if isinstance(node, ast.FunctionDef)}
CLASSES = {node.name: node for node in TREE.body if isinstance(node, ast.ClassDef)}


def is_public(name):
    return not name.startswith("_")


def methods_of(class_node):
    return {node.name: node for node in class_node.body if isinstance(node, ast.FunctionDef) and is_public(node.name)}


def members_of(class_node):
    return {node.target.id: node for node in class_node.body if isinstance(node, ast.AnnAssign)}


def names_with(object_type, descriptor):
    return [name for name, value in vars(object_type).items() if isinstance(value, descriptor) and is_public(name)]


def names_in(node):
    return {name.id for name in ast.walk(node) if isinstance(name, ast.Name)}


def annotations_of(function):
    return [argument.annotation for argument in function.args.args if argument.annotation] + [function.returns]


def sample(annotation):
    """A value of the type that the stub wants."""
    samples = {"str": "x", "int": 1, "_Value": 1, "dataFrame": orbClient.dataFrame(), "List": []}
    name = annotation.value.id if isinstance(annotation, ast.Subscript) else annotation.id
    return samples[name]


def takes(function, arguments):
    """Whether the number and the types of the arguments are accepted; what comes of them is another matter."""
    try:
        function(*arguments)
    except TypeError:
        return False
    except SystemError:  # there is no client to ask
        return True
    return True


class Stub(unittest.TestCase):
    def check_arguments(self, function, node, has_self):
        arguments = node.args.args[1:] if has_self else node.args.args
        self.assertIsNone(node.args.vararg)
        self.assertIsNone(node.args.kwarg)
        self.assertEqual(node.args.kwonlyargs, [])
        for argument in arguments:
            self.assertTrue(argument.arg.startswith("__"), "no keywords are taken")
        values = [sample(argument.annotation) for argument in arguments]
        required = len(values) - len(node.args.defaults)
        for count in range(len(values) + 2):
            given = values[:count] + ["x"] * (count - len(values))
            self.assertEqual(takes(function, given), required <= count <= len(values), f"{count} arguments")
        if values:
            keywords = {argument.arg.lstrip("_"): value for argument, value in zip(arguments, values)}
            with self.assertRaises(TypeError):
                function(**keywords)

    def test_the_module_has_these_names_in_this_order(self):
        self.assertEqual([name for name in vars(orbClient) if is_public(name)], list(FUNCTIONS) + list(CLASSES))
        self.assertEqual(list(CLASSES), list(OBJECT_TYPES))
        self.assertEqual(len(FUNCTIONS), 8)

    def test_functions(self):
        for name, node in FUNCTIONS.items():
            with self.subTest(name):
                function = getattr(orbClient, name)
                self.assertIsInstance(function, types.BuiltinFunctionType)
                self.assertEqual(ast.get_docstring(node, clean=False), function.__doc__)
                self.check_arguments(function, node, has_self=False)

    def test_types(self):
        for name, node in CLASSES.items():
            with self.subTest(name):
                object_type = getattr(orbClient, name)
                self.assertEqual(ast.get_docstring(node, clean=False), object_type.__doc__)
                self.assertEqual(list(methods_of(node)), names_with(object_type, types.MethodDescriptorType))
                self.assertEqual(list(members_of(node)), names_with(object_type, types.MemberDescriptorType))
                everything = set(methods_of(node)) | set(members_of(node))
                self.assertEqual(everything, set(filter(is_public, dir(object_type))))

    def test_methods(self):
        for class_name, class_node in CLASSES.items():
            instance = getattr(orbClient, class_name)()
            for name, node in methods_of(class_node).items():
                with self.subTest(f"{class_name}.{name}"):
                    method = getattr(instance, name)
                    self.assertEqual(ast.get_docstring(node, clean=False), method.__doc__)
                    self.check_arguments(method, node, has_self=True)

    def test_getters_can_fail_and_setters_say_ok_or_error(self):
        for class_name, class_node in CLASSES.items():
            for name, node in methods_of(class_node).items():
                with self.subTest(f"{class_name}.{name}"):
                    if name.startswith("getStatus") or name.startswith("getControl"):
                        self.assertIn("str", names_in(node.returns))
                    if name.startswith("set"):
                        self.assertEqual(node.returns.id, "str")

    def test_constructors(self):
        constructors = {
            name: node for name, class_node in CLASSES.items() for node in class_node.body
            if isinstance(node, ast.FunctionDef) and node.name == "__init__"
        }
        self.assertEqual(list(constructors), ["connection"])
        self.assertEqual([argument.arg for argument in constructors["connection"].args.args], ["self", "name"])
        self.assertEqual(len(constructors["connection"].args.defaults), 1)
        self.assertEqual(orbClient.connection(name="x").name, "x")
        self.assertTrue(takes(orbClient.connection, ["x"]))
        self.assertFalse(takes(orbClient.connection, ["x", "y"]))

    def test_members_can_be_written_and_read(self):
        for class_name, class_node in CLASSES.items():
            instance = getattr(orbClient, class_name)()
            for name in members_of(class_node):
                with self.subTest(f"{class_name}.{name}"):
                    value = object()
                    setattr(instance, name, value)
                    self.assertIs(getattr(instance, name), value)

    # Inside of a class, a type checker takes a name for the class's own: for the int "module" of a channel, and not for
    # the type.
    def test_no_annotation_uses_a_name_that_its_class_has(self):
        for class_name, class_node in CLASSES.items():
            own = set(methods_of(class_node)) | set(members_of(class_node))
            annotations = [node.annotation for node in members_of(class_node).values()]
            for node in methods_of(class_node).values():
                annotations += annotations_of(node)
            for annotation in annotations:
                self.assertEqual(names_in(annotation) & own, set(), f"{class_name}, line {annotation.lineno}")

    def test_every_name_in_an_annotation_is_known(self):
        known = set(CLASSES) | {"_Value", "str", "int", "float", "bool", "None"}
        for node in TREE.body:
            if isinstance(node, ast.ImportFrom):
                known |= {alias.name for alias in node.names}
        for function in ast.walk(TREE):
            if isinstance(function, ast.FunctionDef):
                for annotation in annotations_of(function):
                    self.assertLessEqual(names_in(annotation), known, function.name)
            elif isinstance(function, ast.AnnAssign):
                self.assertLessEqual(names_in(function.annotation), known)

    def test_the_marker_of_typed_code_is_beside_it(self):
        self.assertTrue(os.path.isfile(os.path.join(os.path.dirname(STUB), "py.typed")))


if __name__ == "__main__":
    unittest.main()
