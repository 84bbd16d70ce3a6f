#pragma once

#include <vector>

#include <QFileInfo>

#include "ui/toolform.h"

class QLabel;
class QPushButton;
class QTextEdit;

namespace tirn {

class SequenceHighlighter;
struct SequenceStacks;

/// Asks which digits of a file name number time points, slices and channels, and finds the files of the
/// sequence.
class SequenceTiffForm : public ToolForm
{
    Q_OBJECT

public:
    /// Who asked for the sequence.
    enum Mode { ForStack = 0, ForAdvancedMovie = 1, ForMovie = 2 };

    SequenceTiffForm(const FormServices& services, QWidget* parent);

    QString wildcardTime(const QString& name) const;
    QString wildcardSlice(const QString& name) const;
    QString wildcardChannel(const QString& name) const;

public Q_SLOTS:
    /// Begins with the questions on one file of the sequence.
    void setFilename(const QString& name, int mode);
    /// The character of the name that was clicked; the name is paragraph 0.
    void selectField(int paragraph, int position);
    void noneofTheAbove();
    void updateQuestion();
    /// Finds the files and hands them over.
    void load();

Q_SIGNALS:
    void setupTiff(const tirn::LoadDescription& load, const QString& pattern, int bitDepth, int slices);
    void advancedTiffs(const std::vector<QStringList>& files);
    void movieTiffs(const std::vector<QStringList>& files);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// What is asked: nothing yet, then one thing after the other.
    enum Stage { Begin = 0, Time = 1, Slices = 2, Channels = 3, Done = 4 };

    bool handleKey(int key);
    QString wildcardField(const QString& name, int field) const;
    void complain(const QString& text);
    void handOver(const QString& pattern, const SequenceStacks& stacks);

    QLabel* m_question;
    QTextEdit* m_name;
    QPushButton* m_none;
    SequenceHighlighter* m_highlighter = nullptr;
    QFileInfo m_file;
    int m_mode = ForStack;
    int m_stage = Begin;
    ProbeQuestion m_found;
};

} // namespace tirn
