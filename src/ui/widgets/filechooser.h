#pragma once

#include <QWidget>

class QLineEdit;
class QToolButton;

namespace tirn {

/// A line for a path with a button that browses for it.
class FileChooser : public QWidget
{
    Q_OBJECT

public:
    enum class Mode { OpenFile, SaveFile, Directory };
    explicit FileChooser(Mode mode, QWidget* parent = nullptr);

    QString fileName() const;
    /// Sends no signal.
    void setFileName(const QString& name);
    /// Where browsing begins while no name stands in the line.
    void setPathHint(const QString& path) { m_pathHint = path; }
    /// What files the dialog offers.
    void setFilter(const QString& filter) { m_filter = filter; }
    void setTitle(const QString& title) { m_title = title; }

public Q_SLOTS:
    /// Asks for a file as the button does.
    void browse();

Q_SIGNALS:
    /// The user changed the name, by a letter or by choosing a file.
    void fileNameChanged(const QString& name);

protected:
    void focusInEvent(QFocusEvent* event) override;
    /// Enter stays here: it takes the name, which counts already, or browses from the button.
    void keyPressEvent(QKeyEvent* event) override;

private:
    Mode m_mode;
    QString m_pathHint;
    QString m_filter;
    QString m_title;
    QLineEdit* m_line;
    QToolButton* m_button;
};

} // namespace tirn
