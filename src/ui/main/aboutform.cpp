#include "ui/main/aboutform.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

namespace tirn {

AboutForm::AboutForm(const FormServices& services, QWidget* parent) : ToolForm(services, {}, parent)
{
    setWindowTitle(tr("About Tirn"));
    auto* title = new QLabel("<h2>Tirn " TIRN_VERSION "</h2>", this);
    auto* text = new QLabel(tr("A viewer for three-dimensional microscope data.\n\n"
                               "Copyright 2026, the Tirn authors.\n"
                               "BSD 3-Clause License."),
                            this);
    text->setWordWrap(true);
    auto* renderer = new QLabel(tr("Drawn by %1").arg(services.card.renderer), this);
    renderer->setWordWrap(true);
    renderer->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    for (QWidget* widget : {static_cast<QWidget*>(title), static_cast<QWidget*>(text),
                            static_cast<QWidget*>(renderer), static_cast<QWidget*>(buttons)})
        layout->addWidget(widget);
    layout->setSizeConstraint(QLayout::SetMinimumSize);
    resize(380, sizeHint().height());
}

} // namespace tirn
