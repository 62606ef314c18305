#pragma once

#include "orbclient/method_table.h"
#include "orbclient/python_include.h"

#include <QString>
#include <QVector>

#include <array>

// What the module offers, in words that Python's stub files use: what the generators of the stub and of the reference
// pages are made of. It is all read from the module's own tables. No interpreter is needed; everything may be called
// from any thread.

namespace orbclient
{

/// An object type of the module.
struct TypeDescription
{
    const PyTypeObject *type = nullptr;
    MethodRows methods;
    /// What it takes, "(self, name: str = ...) -> None"; null when constructor arguments are ignored.
    const char *constructor = nullptr;

    /// As the module lists it: "channel".
    QString name() const;
};

/// The object types, in the order in which the module lists them.
std::array<TypeDescription, 5> typeDescriptions();

/// A member of an object type.
struct MemberDescription
{
    QString name;
    QString typeName; ///< as a stub file writes it; empty when nothing here knows the member
    QString docstring;
};

/// The members of an object type, in their order.
QVector<MemberDescription> memberDescriptions(const PyTypeObject &type);

/// A parameter of a function or a method.
struct ParameterDescription
{
    QString name;
    QString typeName;
    bool optional = false;
};

/// What a row can be called with, without "self".
QVector<ParameterDescription> parametersOf(const Method &method);
QVector<ParameterDescription> parametersOf(const QString &signature);

/// What calling a row gives, as a stub file writes it: "Union[float, bool, str]". A read that fails gives the text
/// "error", so that there is no getter without a str.
QString resultTypeOf(const Method &method);

/// The item that a row reads or writes; empty for a Call.
QString itemNameOf(const Method &method);

/// The type of what a setter takes, by the name that the stub gives it.
QString valueTypeName();

} // namespace orbclient
