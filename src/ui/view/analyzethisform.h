#pragma once

#include "ui/toolform.h"

class QPlainTextEdit;

namespace tirn {

/// What the video card can do.
class AnalyzeThisForm : public ToolForm
{
    Q_OBJECT

public:
    AnalyzeThisForm(const FormServices& services, QWidget* parent);

public Q_SLOTS:
    void analyze();
    /// Puts the whole text on the clipboard.
    void copy();

protected:
    void refresh(Changes changes) override;

private:
    QPlainTextEdit* m_text;
};

} // namespace tirn
