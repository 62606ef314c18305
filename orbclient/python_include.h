#pragma once

// The only way to Python's header. It must come before any standard header that it configures, and it uses words as
// names that Qt's keywords, where they are on, replace.
#pragma push_macro("slots")
#undef slots
#define PY_SSIZE_T_CLEAN
#include <Python.h>
#include <structmember.h>
#pragma pop_macro("slots")
