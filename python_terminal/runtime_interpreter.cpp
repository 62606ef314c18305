#include "orbclient/python_include.h"

#include <clocale>
#include <string>
#include <vector>

// The plain Python 3.7 of an installed runtime: what a script starts as sys.executable. It differs from the one that
// the build found in where it looks for its library: beside itself, wherever the runtime is copied to.

int main(int argc, char *argv[])
{
    std::setlocale(LC_ALL, "");
    std::vector<std::wstring> arguments;
    for (int i = 0; i < argc; ++i) {
        wchar_t *decoded = Py_DecodeLocale(argv[i], nullptr);
        if (decoded == nullptr)
            return 1;
        arguments.emplace_back(decoded);
        PyMem_RawFree(decoded);
    }
    std::vector<wchar_t *> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::wstring &argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    return Py_Main(argc, pointers.data());
}
