#pragma once

#include "orbclient/item_access.h"
#include "orbclient/method_table.h"
#include "orbclient/python_include.h"

#include <QByteArray>

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

// Makes the interpreter's list of methods from a table. PyMethodDef has no room for a closure, so every row gets a
// function of its own; it does nothing but name its row to readItem or writeItem.

namespace orbclient
{

template <const auto &Table, std::size_t Row>
std::string_view itemName()
{
    constexpr const Method &method = Table[Row];
    if constexpr (method.item != nullptr) {
        return method.item;
    } else {
        // The client library is asked once; its names do not change while it is loaded.
        static const QByteArray name = method.definition().toLatin1();
        return {name.constData(), static_cast<std::size_t>(name.size())};
    }
}

/// `owner` is a reference to an object with static storage duration.
template <const ItemOwner &Owner, const auto &Table, std::size_t Row>
PyObject *callRow(PyObject *self, PyObject *arguments)
{
    constexpr const Method &method = Table[Row];
    if constexpr (method.kind == MethodKind::Call) {
        return method.function(self, arguments);
    } else if constexpr (method.kind == MethodKind::Set) {
        return writeItem(self, Owner, arguments, itemName<Table, Row>());
    } else {
        return readItem(self, Owner, itemName<Table, Row>(), method.conversion,
                        method.kind == MethodKind::GetWithTimestamp);
    }
}

template <const ItemOwner &Owner, const auto &Table, std::size_t... Rows>
auto makeMethodDefinitions(std::index_sequence<Rows...>)
{
    return std::array<PyMethodDef, sizeof...(Rows) + 1>{
        PyMethodDef{Table[Rows].name, callRow<Owner, Table, Rows>,
                    Table[Rows].kind == MethodKind::Get || Table[Rows].kind == MethodKind::GetWithTimestamp
                        ? METH_NOARGS
                        : METH_VARARGS,
                    Table[Rows].docstring}...,
        PyMethodDef{nullptr, nullptr, 0, nullptr}};
}

/// The list of a table's methods, in its order, as a type wants it: it lives as long as the process.
template <const ItemOwner &Owner, const auto &Table>
PyMethodDef *methodDefinitions()
{
    static_assert(namesAreDistinct(Table), "two methods of one name");
    static_assert(rowsAreComplete(Table), "a method without an item or a function");
    static auto definitions =
        makeMethodDefinitions<Owner, Table>(std::make_index_sequence<std::size(Table)>());
    return definitions.data();
}

} // namespace orbclient
