#pragma once

#include <span>

#include "ui/toolform.h"

namespace tirn {

/// How a form stands beside the main window.
enum class FormKind {
    /// Asks something and goes.
    Dialog,
    /// Stays beside the picture; may be docked.
    Tool,
};

/// One form: a new form is its two files, an id, and a row.
struct FormRow
{
    FormId id;
    /// The name that the form is given, and what a failed allocation calls it.
    const char* name;
    const char* failureName;
    FormKind kind = FormKind::Tool;
    /// The action of the main window that leads to it. In the Window menu it stands at `place`, counted from
    /// 1, with `menuText`; elsewhere it stands in the main window's own list.
    const char* action = "";
    int place = 0;
    const char* menuText = "";
    /// What the volume's context menu calls it; empty where it is not there.
    const char* contextText = "";
    /// Its name in sessions; empty for a form that is in none.
    const char* session = "";
    /// Null while the form is not there.
    ToolForm* (*make)(const FormServices& services, QWidget* parent) = nullptr;
};

/// All forms, in the order in which they are made.
std::span<const FormRow> formRows();

const FormRow& formRow(FormId id);

} // namespace tirn
