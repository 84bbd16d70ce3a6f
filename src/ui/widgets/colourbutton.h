#pragma once

#include <QColor>
#include <QPushButton>

namespace tirn {

/// A button that shows a colour, and asks for another one when it is pressed.
class ColourButton : public QPushButton
{
    Q_OBJECT

public:
    /// `title` is that of the dialog.
    ColourButton(const QString& text, const QString& title, QWidget* parent);

    QColor colour() const { return m_colour; }
    void setColour(const QColor& colour);

Q_SIGNALS:
    /// The user has chosen one; what the button shows is for whoever hears it to say.
    void colourChosen(const QColor& colour);

private:
    void choose();

    QString m_title;
    QColor m_colour;
};

} // namespace tirn
