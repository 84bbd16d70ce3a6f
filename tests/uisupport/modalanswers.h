#pragma once

#include <deque>
#include <functional>

#include <QDialog>
#include <QMessageBox>
#include <QString>
#include <QStringList>

namespace tirn::test {

/// Answers modal dialogs as they come up, while the code under test waits in them. A dialog that comes up
/// without an answer is rejected, and shows in `shown`, so that no test hangs.
class ModalAnswers : public QObject
{
public:
    using Answer = std::function<void(QDialog& dialog)>;

    ModalAnswers();
    ~ModalAnswers() override;

    /// For the next dialog that has no answer yet.
    void add(Answer answer) { m_answers.push_back(std::move(answer)); }
    /// Presses the button with this text; mnemonics do not count.
    void press(const QString& button);
    /// Takes a name in a file dialog.
    void choose(const QString& fileName);
    /// "title: text" of each message box, the title of other dialogs, in the order in which they came.
    const QStringList& shown() const { return m_shown; }
    /// Whether all answers were asked for.
    bool allAsked() const { return m_answers.empty(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void answer(QDialog& dialog);

    std::deque<Answer> m_answers;
    QStringList m_shown;
};

} // namespace tirn::test
