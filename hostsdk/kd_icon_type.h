#pragma once

#include <QtGlobal>

namespace KD
{

/// Icons that the host provides through KdMainData::getIcon.
enum IconType : quint32
{
    OpenFileIcon = 10,
    SaveFileIcon = 11,
    ClearIcon = 15,
    TextEditorIcon = 29,
    TerminalIcon = 51,
    ExecuteFileIcon = 55,
};

} // namespace KD
