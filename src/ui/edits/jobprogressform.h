#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;
class QPushButton;

namespace tirn {

/// Shows how far a job on another thread has come, and lets the user cancel it. It does not block the window,
/// and closing it by any means cancels, too: it goes when the job has ended.
class JobProgressForm : public QDialog
{
    Q_OBJECT

public:
    JobProgressForm(const QString& name, QWidget* parent);

    /// A job starts: shows the form.
    void start(const QString& caption, const QString& text);
    /// An empty text keeps the one before; so does a total of 0 or less.
    void setProgress(const QString& text, int value, int total);
    /// The job has ended: hides the form.
    void finish();

public Q_SLOTS:
    /// Asks for the end of the job, once.
    void reject() override;

Q_SIGNALS:
    void cancelled();

private:
    QLabel* m_text;
    QProgressBar* m_bar;
    QPushButton* m_cancel;
};

} // namespace tirn
