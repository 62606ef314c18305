#pragma once

#include <QString>

namespace simulator
{

/// A text of somebody else's in quotation marks, fit to stand in one line of a refusal: control characters and half
/// surrogates are replaced, and a text of more than 60 characters is cut.
QString quoted(const QString &text);

} // namespace simulator
