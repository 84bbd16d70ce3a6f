#pragma once

#include <QDialog>

namespace tirn {

/// What the program is, its version and its licence.
class AboutForm : public QDialog
{
    Q_OBJECT

public:
    AboutForm(const QString& card, QWidget* parent);
};

} // namespace tirn
