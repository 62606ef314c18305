#pragma once

#include "orbclient/python_include.h"

#include <QString>

#include <cstddef>
#include <memory>

namespace orbclient
{

/// Takes Python's texts out in wide characters, into storage that is kept from one text to the next.
///
/// Text of n characters reuses the storage while n + 10 is below its capacity; otherwise the storage is replaced by
/// one of n + 10. Not guarded by any lock of its own: the interpreter lock serialises its callers.
class WideTextBuffer
{
public:
    /// The one buffer of the process.
    static WideTextBuffer &instance();

    /// The text of a str or of a subtype's object, NULs and lone surrogates included; empty when it has none.
    /// No exception is left behind.
    QString textOf(PyObject *string);

    /// In wide characters; 0 before the first text.
    std::size_t capacity() const { return size; }

private:
    std::unique_ptr<wchar_t[]> storage;
    std::size_t size = 0;
};

} // namespace orbclient
