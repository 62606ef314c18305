#include "python_terminal/password_prompt.h"

#include "orbclient/py_ref.h"

namespace python_terminal
{

namespace
{

// Done when a script imports the module: doing it at the start would double the time that the start takes.
const char Finder[] = R"(
import sys

class Finder:
    @staticmethod
    def find_spec(name, path=None, target=None, modules=sys.meta_path[-1]):
        if name != "getpass":
            return None
        spec = modules.find_spec(name, path, target)
        if spec is None:
            return None
        execute = spec.loader.exec_module
        def exec_module(module):
            execute(module)
            module.getpass = module.fallback_getpass
        spec.loader.exec_module = exec_module
        return spec

sys.meta_path.insert(0, Finder)
)";

} // namespace

void askForPasswordsInConsole()
{
    const PyRef names(PyDict_New());
    if (names && PyDict_SetItemString(names.get(), "__builtins__", PyEval_GetBuiltins()) == 0)
        const PyRef result(PyRun_String(Finder, Py_file_input, names.get(), names.get()));
    PyErr_Clear();
}

} // namespace python_terminal
