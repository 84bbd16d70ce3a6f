#include "app/inputcolours.h"

#include <QApplication>
#include <QPalette>

namespace tirn {

void colourInputs()
{
    QPalette inputs = QApplication::palette();
    // Setting them tells of a change again.
    if (QApplication::palette("QSpinBox").color(QPalette::Base) == inputs.color(QPalette::Window))
        return;
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive})
        inputs.setColor(group, QPalette::Base, inputs.color(group, QPalette::Window));
    for (const char* widgetClass : {"QSpinBox", "QTableWidget", "QComboBox", "tirn::FileChooser"})
        QApplication::setPalette(inputs, widgetClass);
}

} // namespace tirn
