#pragma once

#include "ui/toolform.h"

namespace tirn {

/// What the program is, its version and its licence.
class AboutForm : public ToolForm
{
    Q_OBJECT

public:
    AboutForm(const FormServices& services, QWidget* parent);
};

} // namespace tirn
