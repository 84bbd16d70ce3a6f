#include "ui/edits/customfilterform.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

#include "ui/messages.h"

namespace tirn {

namespace {

constexpr int kFirstSide = 3;
/// So many columns and rows are seen at once, each column wide enough for so many characters.
constexpr int kShownCells = 5;
constexpr int kCellCharacters = 8;

/// A weight as it is typed, with a point or with the locale's sign; nothing for anything else.
std::optional<double> weightOf(const QTableWidgetItem* item)
{
    const QString text = item != nullptr ? item->text().trimmed() : QString();
    if (text.isEmpty())
        return 0;
    bool isNumber = false;
    double weight = text.toDouble(&isNumber);
    if (!isNumber)
        weight = QLocale().toDouble(text, &isNumber);
    if (!isNumber || !(std::abs(weight) <= FilterKernel::kHeaviest))
        return {};
    return weight;
}

QSpinBox* sideBox(const char* name, QWidget* parent)
{
    auto* box = new QSpinBox(parent);
    box->setObjectName(name);
    box->setRange(1, FilterKernel::kWidest);
    box->setValue(kFirstSide);
    return box;
}

QString shownWeight(double weight) { return QString::number(weight, 'g', QLocale::FloatingPointShortest); }

} // namespace

CustomFilterForm::CustomFilterForm(int channels, QWidget* parent)
    : QDialog(parent), m_table(new QTableWidget(this)), m_width(sideBox("spnWidth", this)),
      m_height(sideBox("spnHeight", this)), m_allChannels(new QCheckBox(tr("&All channels"), this)),
      m_channel(new QSpinBox(this))
{
    setObjectName("CustomFilterForm");
    setWindowTitle("Custom");
    m_table->setObjectName("tblKernel");
    m_table->horizontalHeader()->setDefaultSectionSize(kCellCharacters * fontMetrics().averageCharWidth() +
                                                       fontMetrics().height());
    m_table->setTabKeyNavigation(false);
    m_table->setMinimumSize(kShownCells * m_table->horizontalHeader()->defaultSectionSize() +
                                2 * fontMetrics().height(),
                            (kShownCells + 1) * m_table->verticalHeader()->defaultSectionSize());
    auto* sides = new QFormLayout;
    sides->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    sides->addRow(tr("&Width"), m_width);
    sides->addRow(tr("&Height"), m_height);
    m_allChannels->setObjectName("chkAllChannels");
    m_allChannels->setChecked(true);
    m_channel->setObjectName("spnChannel");
    m_channel->setRange(1, std::max(1, channels));
    m_channel->setEnabled(false);
    connect(m_allChannels, &QCheckBox::toggled, m_channel, &QWidget::setDisabled);
    sides->addRow(m_allChannels);
    sides->addRow(tr("C&hannel"), m_channel);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* loadButton = buttons->addButton(tr("&Load..."), QDialogButtonBox::ActionRole);
    loadButton->setObjectName("btnLoad");
    loadButton->setAutoDefault(false);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("btnOK");
    buttons->button(QDialogButtonBox::Ok)->setText(tr("&OK"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName("btnCancel");
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("&Cancel"));
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(sides);
    layout->addWidget(m_table, 1);
    layout->addWidget(
        new QLabel(tr("Empty places are 0. Sums are divided by the sum of the weights."), this));
    layout->addWidget(buttons);
    connect(m_width, qOverload<int>(&QSpinBox::valueChanged), this, &CustomFilterForm::resizeTable);
    connect(m_height, qOverload<int>(&QSpinBox::valueChanged), this, &CustomFilterForm::resizeTable);
    connect(loadButton, &QPushButton::clicked, this, &CustomFilterForm::load);
    connect(buttons, &QDialogButtonBox::accepted, this, &CustomFilterForm::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    resizeTable();
    // One weight in the middle: the stack as it is.
    m_table->setItem(kFirstSide / 2, kFirstSide / 2, new QTableWidgetItem("1"));
    m_table->setCurrentCell(0, 0);
}

void CustomFilterForm::resizeTable()
{
    m_table->setColumnCount(m_width->value());
    m_table->setRowCount(m_height->value());
}

FilterKernel CustomFilterForm::kernel() const
{
    FilterKernel kernel;
    kernel.width = m_table->columnCount();
    kernel.height = m_table->rowCount();
    for (int row = 0; row < kernel.height; ++row) {
        for (int column = 0; column < kernel.width; ++column)
            kernel.weights.push_back(weightOf(m_table->item(row, column)).value_or(0));
    }
    return kernel;
}

int CustomFilterForm::channel() const { return m_allChannels->isChecked() ? -1 : m_channel->value() - 1; }

void CustomFilterForm::setKernel(const FilterKernel& kernel)
{
    const QSignalBlocker widthBlocker(m_width);
    const QSignalBlocker heightBlocker(m_height);
    m_width->setValue(kernel.width);
    m_height->setValue(kernel.height);
    m_table->clearContents();
    resizeTable();
    for (int row = 0; row < kernel.height; ++row) {
        for (int column = 0; column < kernel.width; ++column) {
            const auto place = static_cast<std::size_t>(row) * static_cast<std::size_t>(kernel.width) +
                               static_cast<std::size_t>(column);
            m_table->setItem(row, column, new QTableWidgetItem(shownWeight(kernel.weights[place])));
        }
    }
}

void CustomFilterForm::load()
{
    QFileDialog chooser(this, tr("Load filter Kernel"), QString(), "Kernel (*.txt)");
    chooser.setObjectName("Load filter kernel");
    chooser.setFileMode(QFileDialog::ExistingFile);
    if (chooser.exec() != QDialog::Accepted || chooser.selectedFiles().isEmpty())
        return;
    const QString name = chooser.selectedFiles().first();
    QString error;
    const FilterKernel kernel = kernelFromFile(name, error);
    if (kernel.isValid())
        setKernel(kernel);
    else
        waitForMessage(this, QMessageBox::Warning, tr("Load filter Kernel"), name + ":\n" + error);
}

QString CustomFilterForm::wrongPlace() const
{
    for (int row = 0; row < m_table->rowCount(); ++row) {
        for (int column = 0; column < m_table->columnCount(); ++column) {
            if (!weightOf(m_table->item(row, column)))
                return tr("The weight in row %1, column %2 is no number.").arg(row + 1).arg(column + 1);
        }
    }
    return {};
}

void CustomFilterForm::accept()
{
    const QString wrong = wrongPlace();
    if (wrong.isEmpty())
        QDialog::accept();
    else
        waitForMessage(this, QMessageBox::Warning, windowTitle(), wrong);
}

} // namespace tirn
