#pragma once

#include <QString>

namespace orbclient
{

/// The stub file of the module (PEP 484, for Python 3.7): what editors complete and type checkers check against. It
/// follows the module's own tables, in their order. Needs no interpreter.
QString pythonStub();

} // namespace orbclient
