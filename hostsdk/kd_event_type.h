#pragma once

#include <QtGlobal>

/// Numbers of the host framework.
namespace KD
{

/// Events between host, tools and the parts of a tool.
enum EventType : quint32
{
    // host to tool
    HideTool = 147, ///< the tool is being hidden; it answers with ToolHidden
    ShowTool = 148, ///< the tool is being shown; it answers with ToolShown
    QueryTool = 149, ///< the tool answers with ToolAnswer
    SetLayoutMargin = 150, ///< integer 0: the layout margin to apply, in pixels
    StopInterpreter = 173, ///< a tool that runs an interpreter stops it
    ItemSelected = 206, ///< a hardware item was selected; getHardwareId(0) gives it
    ItemActivated = 208, ///< the same, selected in another way

    // tool to host
    ToolAnswer = 152, ///< answer to QueryTool, no arguments
    RegisterMenuEntry = 178, ///< integers: 104, unique widget class id; strings: the menu path
    ToolShown = 181, ///< the tool became visible; arguments as RegisterMenuEntry
    ToolHidden = 182, ///< the tool was hidden; arguments as RegisterMenuEntry

    // between the parts of a terminal tool
    ShowTerminal = 252,
    ShowEditor = 253,
    OpenFile = 254,
    SaveFile = 255,
    ExecuteFile = 256,
    ClearTerminal = 257,
    Request = 258, ///< string 0: a request text
    ControllerChosen = 259, ///< string 0: the controller that raw requests go to
    BusyChanged = 260, ///< integer 0: not zero while the tool waits
    ModifiedChanged = 261, ///< integer 0: not zero when the edited text differs from its file
};

/// Custom Qt event that carries work to a widget's thread, and what it can be about.
constexpr int CustomEventType = 1200;
constexpr int StructureChangedSubCode = 211;

} // namespace KD
