#include "ui/open/sequencetiffform.h"

#include <algorithm>
#include <array>
#include <new>

#include <QAbstractTextDocumentLayout>
#include <QDialogButtonBox>
#include <QHideEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QTextEdit>
#include <QVBoxLayout>

#include "base/log.h"
#include "formats/names/filelists.h"
#include "formats/names/sequencenames.h"
#include "ui/messages.h"
#include "ui/open/stackopenform.h"
#include "ui/open/startload.h"
#include "ui/widgets/sequencehighlighter.h"

namespace tirn {

namespace {

constexpr int kVisibleCharacters = 56;
constexpr int kVisibleLines = 3;
constexpr double kNameScale = 1.3;

QString centred(const QString& text) { return "<p align=\"center\">" + text + "</p>"; }

} // namespace

SequenceTiffForm::SequenceTiffForm(const FormServices& services, QWidget* parent)
    : ToolForm(services, {}, parent), m_question(new QLabel(centred(tr("What is your quest?")), this)),
      m_name(new QTextEdit(this)), m_none(new QPushButton(tr("&None of the above"), this)),
      m_found(services.probes)
{
    setWindowTitle(tr("Load Tiff Sequence"));
    m_question->setObjectName("lblQuestion");
    m_name->setObjectName("tedFileName");
    m_name->setReadOnly(true);
    m_name->setTabChangesFocus(true);
    m_name->setMinimumWidth(kVisibleCharacters * fontMetrics().averageCharWidth());
    // Large enough to be hit, and no higher than a long name is.
    QFont font = m_name->font();
    font.setPointSizeF(kNameScale * font.pointSizeF());
    m_name->setFont(font);
    m_name->setMinimumHeight(kVisibleLines * m_name->fontMetrics().lineSpacing());
    m_name->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    m_name->installEventFilter(this);
    m_name->viewport()->installEventFilter(this);
    m_name->viewport()->setCursor(Qt::PointingHandCursor);
    m_none->setObjectName("btnNone");
    auto* hint = new QLabel(tr("Click a number, or go to it with the arrow keys\nand press Enter."), this);
    hint->setAlignment(Qt::AlignHCenter);
    auto* cancel = new QPushButton(tr("&Cancel"), this);
    cancel->setObjectName("btnCancel");
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_none);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_question);
    layout->addWidget(m_name, 1);
    layout->addWidget(hint);
    layout->addLayout(buttons);
    connect(m_none, &QPushButton::clicked, this, &SequenceTiffForm::noneofTheAbove);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    if (services.form) {
        auto* open = static_cast<StackOpenForm*>(services.form(FormId::Stack, false));
        connect(this, &SequenceTiffForm::setupTiff, open, &StackOpenForm::setupTiff);
    }
    try {
        m_highlighter = new SequenceHighlighter(m_name->document());
    } catch (const std::bad_alloc&) {
        logWarning("Counld not allocate syntax highlighter");
        throw;
    }
}

void SequenceTiffForm::setFilename(const QString& name, int mode)
{
    try {
        m_file = QFileInfo(name);
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate the fileinfo necessary for sequence tiffs");
        return;
    }
    m_mode = mode;
    // As plain text, so that each character of the name has its place.
    m_name->setPlainText(m_file.fileName());
    m_name->setAlignment(Qt::AlignHCenter);
    m_highlighter->setName(m_file.fileName());
    m_found.cancel();
    m_stage = Begin;
    updateQuestion();
    show();
    raise();
}

void SequenceTiffForm::showEvent(QShowEvent* event)
{
    ToolForm::showEvent(event);
    m_name->setFocus();
}

void SequenceTiffForm::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous())
        m_found.cancel();
    ToolForm::hideEvent(event);
}

void SequenceTiffForm::updateQuestion()
{
    const std::array questions = {tr("Which field represents time points?"),
                                  tr("Which field represents z slices?"),
                                  tr("Which field represents channels?")};
    ++m_stage;
    if (m_stage <= Channels)
        m_question->setText(centred(questions[static_cast<std::size_t>(m_stage - Time)]));
}

bool SequenceTiffForm::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_name->viewport() && event->type() == QEvent::MouseButtonRelease) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const QPoint scrolled(m_name->horizontalScrollBar()->value(), m_name->verticalScrollBar()->value());
        const int position =
            m_name->document()->documentLayout()->hitTest(mouse->pos() + scrolled, Qt::ExactHit);
        if (mouse->button() == Qt::LeftButton && position >= 0)
            selectField(0, position);
    }
    if (watched == m_name && event->type() == QEvent::KeyPress)
        return handleKey(static_cast<QKeyEvent*>(event)->key());
    return ToolForm::eventFilter(watched, event);
}

bool SequenceTiffForm::handleKey(int key)
{
    switch (key) {
    case Qt::Key_Left:
        m_highlighter->setCurrent(m_highlighter->current() - 1);
        return true;
    case Qt::Key_Right:
        m_highlighter->setCurrent(m_highlighter->current() + 1);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (m_highlighter->current() >= 0)
            selectField(0, m_highlighter->fieldStarts()[static_cast<std::size_t>(m_highlighter->current())]);
        return true;
    default:
        return false;
    }
}

void SequenceTiffForm::selectField(int paragraph, int position)
{
    const int field = paragraph == 0 ? groupAt(m_highlighter->groups(), position) : -1;
    SequenceFields& fields = m_highlighter->fields();
    // What numbers one thing cannot number another.
    if (field < 0 || m_stage == Done || m_highlighter->isChosen(field))
        return;
    if (m_stage == Time)
        fields.time = field;
    else if (m_stage == Slices)
        fields.slice = field;
    else if (m_stage == Channels)
        fields.channel = field;
    m_highlighter->setCurrent(field + 1);
    updateQuestion();
    if (m_stage == Done || m_highlighter->chosenCount() == static_cast<int>(m_highlighter->groups().size()))
        load();
}

void SequenceTiffForm::noneofTheAbove()
{
    SequenceFields& fields = m_highlighter->fields();
    if (m_stage == Time)
        fields.time = SequenceFields::kNone;
    else if (m_stage == Slices)
        fields.slice = SequenceFields::kNone;
    else if (m_stage == Channels)
        fields.channel = SequenceFields::kNone;
    else
        return;
    updateQuestion();
    if (m_stage == Done)
        load();
}

QString SequenceTiffForm::wildcardField(const QString& name, int field) const
{
    return field >= 0 ? wildcarded(name, m_highlighter->groups()[static_cast<std::size_t>(field)]) : name;
}

QString SequenceTiffForm::wildcardTime(const QString& name) const
{
    return wildcardField(name, m_highlighter->fields().time);
}

QString SequenceTiffForm::wildcardSlice(const QString& name) const
{
    return wildcardField(name, m_highlighter->fields().slice);
}

QString SequenceTiffForm::wildcardChannel(const QString& name) const
{
    return wildcardField(name, m_highlighter->fields().channel);
}

/// Says what is wrong, and asks anew.
void SequenceTiffForm::complain(const QString& text)
{
    logWarning("%s", text.toUtf8().constData());
    setFilename(m_file.filePath(), m_mode);
    showMessage(this, QMessageBox::Warning, windowTitle(), text);
}

void SequenceTiffForm::load()
{
    const QString pattern = wildcardChannel(wildcardSlice(wildcardTime(m_file.fileName())));
    const QStringList names = expandPattern(besideFile(m_file.filePath(), pattern));
    SequenceStacks stacks = groupSequence(names, m_highlighter->groups(), m_highlighter->fields());
    if (names.isEmpty() || stacks.lists.empty()) {
        complain(tr("sequence tiff couldn't find any files!"));
        return;
    }
    services().settings.stackPath = m_file.absolutePath();
    if (stacks.unevenTimePoint >= 0) {
        complain(tr("Sorry, but time point %1 has %2 channels, while time point 1 has %3.  Aborting!")
                     .arg(stacks.unevenTimePoint + 1)
                     .arg(stacks.unevenChannels)
                     .arg(stacks.channels));
        return;
    }
    for (QStringList& list : stacks.lists) {
        for (QString& name : list)
            name = besideFile(m_file.filePath(), name);
    }
    logDebug("timepoint %d channel %d", stacks.timePoints(), stacks.channels);
    const QStringList first = stacks.lists.front();
    m_found.ask({first}, [this, pattern, stacks = std::move(stacks)] {
        hide();
        handOver(pattern, stacks);
    });
}

void SequenceTiffForm::handOver(const QString& pattern, const SequenceStacks& stacks)
{
    const ImageAttributes attributes = m_found.known(stacks.lists.front());
    if (attributes.type == ImageType::Unknown)
        logWarning("Could not allocate file object");
    if (m_mode == ForAdvancedMovie) {
        Q_EMIT advancedTiffs(stacks.lists);
        return;
    }
    if (m_mode == ForMovie) {
        Q_EMIT movieTiffs(stacks.lists);
        return;
    }
    LoadDescription description = freshLoad(services());
    description.fileType = ImageType::TiffSeries;
    description.channels = stacks.channels;
    description.timePoints = stacks.timePoints();
    description.filesToLoad = stacks.lists;
    Q_EMIT setupTiff(description, pattern, attributes.bitDepth, attributes.fileZ);
}

} // namespace tirn
