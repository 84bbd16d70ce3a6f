#include "ui/main/unsavedform.h"

#include <algorithm>

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/widgets/titleroom.h"

namespace tirn {

namespace {

/// A longer list scrolls.
constexpr int kMostRowsShown = 12;

enum class Choice { Save, Discard, Cancel };

class UnsavedForm : public QDialog
{
public:
    UnsavedForm(const std::vector<UnsavedThing>& things, QWidget* parent);

    Choice choice() const { return m_choice; }
    bool isChecked(std::size_t row) const
    {
        return m_list->item(static_cast<int>(row))->checkState() == Qt::Checked;
    }

private:
    void addButton(QDialogButtonBox& box, QDialogButtonBox::StandardButton standard, Choice choice);

    QListWidget* m_list;
    Choice m_choice = Choice::Cancel;
};

UnsavedForm::UnsavedForm(const std::vector<UnsavedThing>& things, QWidget* parent)
    : QDialog(parent), m_list(new QListWidget(this))
{
    setObjectName("unsaved");
    setWindowTitle(tr("Unsaved Changes"));
    makeRoomForTitle(*this);
    const bool isOne = things.size() == 1;
    auto* question = new QLabel(this);
    question->setObjectName("lblQuestion");
    question->setTextFormat(Qt::PlainText);
    question->setText(tr("Do you want to save the changes to ") +
                      (isOne ? things.front().name : tr("these")) + "?");
    m_list->setObjectName("lstUnsaved");
    for (const UnsavedThing& thing : things) {
        auto* item = new QListWidgetItem(thing.name, m_list);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
        item->setCheckState(Qt::Checked);
    }
    const int rows = std::min(static_cast<int>(things.size()), kMostRowsShown);
    m_list->setMinimumHeight(rows * m_list->sizeHintForRow(0) + 2 * m_list->frameWidth());
    auto* buttons = new QDialogButtonBox(this);
    addButton(*buttons, QDialogButtonBox::Save, Choice::Save);
    addButton(*buttons, QDialogButtonBox::Discard, Choice::Discard);
    addButton(*buttons, QDialogButtonBox::Cancel, Choice::Cancel);
    buttons->button(QDialogButtonBox::Save)->setDefault(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(question);
    layout->addWidget(m_list, 1);
    layout->addWidget(buttons);
}

void UnsavedForm::addButton(QDialogButtonBox& box, QDialogButtonBox::StandardButton standard, Choice choice)
{
    connect(box.addButton(standard), &QPushButton::clicked, this, [this, choice] {
        m_choice = choice;
        choice == Choice::Cancel ? reject() : accept();
    });
}

} // namespace

bool askAndSave(const std::vector<UnsavedThing>& things, QWidget* parent)
{
    if (things.empty())
        return true;
    UnsavedForm form(things, parent);
    form.exec();
    if (form.choice() != Choice::Save)
        return form.choice() == Choice::Discard;
    for (std::size_t i = 0; i < things.size(); ++i) {
        if (form.isChecked(i) && !things[i].save())
            return false;
    }
    return true;
}

} // namespace tirn
