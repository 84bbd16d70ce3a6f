#include "ui/widgets/attributes.h"

#include <algorithm>
#include <limits>

#include <QColorDialog>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFont>
#include <QFontDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "base/log.h"
#include "ui/widgets/floatspinbox.h"
#include "ui/widgets/titleroom.h"

namespace tirn {

namespace {

constexpr const char* kAccelerators = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr int kSwatchEdge = 32;
/// How finely a Double is told apart whose options do not say.
constexpr double kPlainLineStep = 0.01;

int typeOf(const QVariant& value) { return static_cast<int>(value.userType()); }

bool isSupported(int type)
{
    switch (type) {
    case QMetaType::QString:
    case QMetaType::QStringList:
    case QMetaType::QFont:
    case QMetaType::QPixmap:
    case QMetaType::QColor:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Bool:
    case QMetaType::Double:
    case QMetaType::QDate:
    case QMetaType::QTime:
    case QMetaType::QDateTime:
        return true;
    default:
        return false;
    }
}

QString fontText(const QFont& font)
{
    return QStringLiteral("%1 %2-pt%3%4")
        .arg(font.family())
        .arg(font.pointSize())
        .arg(font.bold() ? QStringLiteral("bold") : QString(),
             font.italic() ? QStringLiteral("italic") : QString());
}

/// Shows the value of a button's row on the button.
void showOn(QPushButton& button, const QVariant& value)
{
    QPixmap picture;
    switch (typeOf(value)) {
    case QMetaType::QFont:
        button.setText(fontText(value.value<QFont>()));
        return;
    case QMetaType::QColor:
        picture = QPixmap(kSwatchEdge, kSwatchEdge / 2);
        picture.fill(value.value<QColor>());
        button.setText(value.value<QColor>().name());
        break;
    default:
        picture = value.value<QPixmap>();
        button.setText(picture.isNull() ? Attributes::tr("None") : QString());
    }
    button.setIcon(picture);
    button.setIconSize(picture.size().boundedTo({kSwatchEdge, kSwatchEdge}));
}

/// Unsigned numbers beyond what a spin box holds end at its limit.
int spinNumber(const QVariant& value)
{
    const qlonglong number = value.toLongLong();
    return static_cast<int>(
        std::clamp<qlonglong>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

template <class Box>
Box* makeSpinBox(const QVariant& value, const StringVariantMap& options, QWidget* parent)
{
    const bool isUnsigned = typeOf(value) == QMetaType::UInt;
    auto* box = new Box(parent);
    const QVariant minimum = options.value(QStringLiteral("minimum"));
    const QVariant maximum = options.value(QStringLiteral("maximum"));
    box->setRange(minimum.isValid() ? spinNumber(minimum)
                  : isUnsigned      ? 0
                                    : std::numeric_limits<int>::min(),
                  maximum.isValid() ? spinNumber(maximum) : std::numeric_limits<int>::max());
    if (options.contains(QStringLiteral("lineStep")))
        box->setSingleStep(options.value(QStringLiteral("lineStep")).toInt());
    box->setPrefix(options.value(QStringLiteral("prefix")).toString());
    box->setSuffix(options.value(QStringLiteral("suffix")).toString());
    box->setValue(spinNumber(value));
    return box;
}

QWidget* makeFloatSpinBox(double value, const StringVariantMap& options, QWidget* parent)
{
    auto* box = new FloatSpinBox(parent);
    const QVariant minimum = options.value(QStringLiteral("minimum"));
    const QVariant maximum = options.value(QStringLiteral("maximum"));
    box->setDoubleLineStep(options.value(QStringLiteral("lineStep"), kPlainLineStep).toDouble());
    // Without a limit the value itself is one, at the least.
    const double low = minimum.isValid() ? minimum.toDouble() : std::min(box->doubleMinValue(), value);
    const double high = maximum.isValid() ? maximum.toDouble() : std::max(box->doubleMaxValue(), value);
    box->setDoubleRange(low, high);
    box->setDoubleValue(value);
    return box;
}

QWidget* makeDateTimeEdit(const QVariant& value, const StringVariantMap& options, QWidget* parent)
{
    const QVariant earliest = options.value(QStringLiteral("earliest"));
    const QVariant latest = options.value(QStringLiteral("latest"));
    QDateTimeEdit* edit = nullptr;
    switch (typeOf(value)) {
    case QMetaType::QDate:
        edit = new QDateEdit(value.toDate(), parent);
        edit->setCalendarPopup(true);
        if (earliest.isValid())
            edit->setMinimumDate(earliest.toDate());
        if (latest.isValid())
            edit->setMaximumDate(latest.toDate());
        return edit;
    case QMetaType::QTime:
        edit = new QTimeEdit(value.toTime(), parent);
        if (earliest.isValid())
            edit->setMinimumTime(earliest.toTime());
        if (latest.isValid())
            edit->setMaximumTime(latest.toTime());
        break;
    default:
        edit = new QDateTimeEdit(value.toDateTime(), parent);
        if (earliest.isValid())
            edit->setMinimumDateTime(earliest.toDateTime());
        if (latest.isValid())
            edit->setMaximumDateTime(latest.toDateTime());
    }
    // Seconds would be lost otherwise.
    if (!edit->displayFormat().contains(QLatin1String("ss")))
        edit->setDisplayFormat(edit->displayFormat().replace(QLatin1String("mm"), QLatin1String("mm:ss")));
    return edit;
}

} // namespace

QString withAccelerator(const QString& label, QString& free)
{
    QString text;
    bool isPlaced = false;
    for (const QChar character : label) {
        const int at = isPlaced ? -1 : free.indexOf(character.toUpper());
        if (at >= 0) {
            free.remove(at, 1);
            isPlaced = true;
            text += '&';
        } else if (character == '&') {
            text += '&';
        }
        text += character;
    }
    return text;
}

const Attributes::Item* Attributes::find(const QString& name) const
{
    const auto found =
        std::find_if(m_items.begin(), m_items.end(), [&name](const Item& item) { return item.name == name; });
    return found != m_items.end() ? &*found : nullptr;
}

Attributes::Item* Attributes::find(const QString& name)
{
    return const_cast<Item*>(static_cast<const Attributes*>(this)->find(name));
}

void Attributes::setAttribute(const QString& name, QVariant value, const StringVariantMap& options)
{
    if (typeOf(value) == QMetaType::QByteArray)
        value = QString::fromUtf8(value.toByteArray());
    if (Item* item = find(name)) {
        item->value = std::move(value);
        item->choices.clear();
        for (auto option = options.begin(); option != options.end(); ++option)
            item->options[option.key()] = option.value();
        return;
    }
    // It is added all the same: `dialog` leaves it out, and `value` gives it back.
    if (!isSupported(typeOf(value)))
        logDebug("Attributes::setAttribute() internal error");
    Item item;
    item.name = name;
    item.value = std::move(value);
    item.options = options;
    m_items.push_back(std::move(item));
}

void Attributes::removeAttribute(const QString& name)
{
    std::erase_if(m_items, [&name](const Item& item) { return item.name == name; });
}

void Attributes::clear() { m_items.clear(); }

QVariant Attributes::value(const QString& name) const
{
    const Item* item = find(name);
    return item != nullptr ? item->value : QVariant();
}

QVariant Attributes::option(const QString& name, const QString& option) const
{
    const Item* item = find(name);
    return item != nullptr ? item->options.value(option) : QVariant();
}

bool Attributes::dialog(const QString& caption, QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setObjectName("attributes");
    dialog.setWindowTitle(caption);
    makeRoomForTitle(dialog);
    auto* rows = new QFormLayout;
    rows->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    addRows(dialog, *rows);
    disableByOthers();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    // Without accelerators, which belong to the rows: Enter and Escape do the same.
    buttons->button(QDialogButtonBox::Ok)->setText(tr("OK"));
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addLayout(rows);
    layout->addStretch(1);
    layout->addWidget(buttons);
    const bool isAccepted = dialog.exec() == QDialog::Accepted;
    for (Item& item : m_items) {
        if (isAccepted && item.widget != nullptr)
            takeEditor(item);
        item.widget = nullptr;
        item.label = nullptr;
    }
    return isAccepted;
}

void Attributes::addRows(QDialog& dialog, QFormLayout& rows)
{
    QString free = QLatin1String(kAccelerators);
    for (Item& item : m_items) {
        item.widget = nullptr;
        if (item.option("hidden").toBool())
            continue;
        item.widget = makeEditor(item, &dialog);
        if (item.widget == nullptr) {
            logDebug("Attributes does not support the %s type (%s)", qPrintable(item.name),
                     item.value.typeName() != nullptr ? item.value.typeName() : "invalid");
            continue;
        }
        item.widget->setObjectName(item.name);
        item.widget->setToolTip(item.option("helptext").toString());
        item.label = new QLabel(withAccelerator(item.name, free), &dialog);
        item.label->setBuddy(item.widget);
        rows.addRow(item.label, item.widget);
        if (item.option("readonly").toBool())
            item.widget->setEnabled(false);
    }
}

void Attributes::disableByOthers()
{
    for (const Item& item : m_items) {
        const Item* other = find(item.option("disabledwhile").toString());
        auto* choice = other != nullptr ? qobject_cast<QComboBox*>(other->widget) : nullptr;
        if (item.widget == nullptr || choice == nullptr || item.option("readonly").toBool())
            continue;
        const auto follow = [widget = item.widget](int index) { widget->setEnabled(index == 0); };
        connect(choice, qOverload<int>(&QComboBox::currentIndexChanged), item.widget, follow);
        follow(choice->currentIndex());
    }
}

QWidget* Attributes::makeEditor(Item& item, QWidget* parent)
{
    if (!item.choices.isEmpty())
        return makeChoice(item, parent);
    switch (typeOf(item.value)) {
    case QMetaType::QString:
        return makeLine(item, parent);
    case QMetaType::QStringList:
    case QMetaType::Bool:
        return makeChoice(item, parent);
    case QMetaType::QFont:
    case QMetaType::QPixmap:
    case QMetaType::QColor:
        return makeButton(item, parent);
    case QMetaType::Int:
    case QMetaType::UInt:
        return makeSpinBox<QSpinBox>(item.value, item.options, parent);
    case QMetaType::Double:
        return makeFloatSpinBox(item.value.toDouble(), item.options, parent);
    case QMetaType::QDate:
    case QMetaType::QTime:
    case QMetaType::QDateTime:
        return makeDateTimeEdit(item.value, item.options, parent);
    default:
        return nullptr;
    }
}

QWidget* Attributes::makeLine(const Item& item, QWidget* parent)
{
    auto* line = new QLineEdit(item.value.toString(), parent);
    if (!item.options.contains("filefilter"))
        return line;
    auto* both = new QWidget(parent);
    line->setParent(both);
    auto* button = new QToolButton(both);
    button->setText("...");
    button->setToolTip(tr("Choose a file"));
    auto* layout = new QHBoxLayout(both);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(line, 1);
    layout->addWidget(button);
    both->setFocusProxy(line);
    connect(button, &QToolButton::clicked, this, [this, name = item.name] { mapped(name); });
    return both;
}

QWidget* Attributes::makeChoice(Item& item, QWidget* parent)
{
    auto* box = new QComboBox(parent);
    if (typeOf(item.value) == QMetaType::Bool) {
        box->addItems({"False", "True"});
        box->setCurrentIndex(item.value.toBool() ? 1 : 0);
        return box;
    }
    if (item.choices.isEmpty()) {
        item.choices = item.value.toStringList();
        const QVariant selected = item.option("selected");
        const int index = typeOf(selected) == QMetaType::Int
                              ? selected.toInt()
                              : static_cast<int>(item.choices.indexOf(selected.toString()));
        box->addItems(item.choices);
        box->setCurrentIndex(index >= 0 && index < box->count() ? index : 0);
        return box;
    }
    box->addItems(item.choices);
    box->setCurrentText(item.value.toString());
    return box;
}

QWidget* Attributes::makeButton(const Item& item, QWidget* parent)
{
    auto* button = new QPushButton(parent);
    button->setAutoDefault(false);
    showOn(*button, item.value);
    connect(button, &QPushButton::clicked, this, [this, name = item.name] { mapped(name); });
    return button;
}

namespace {

QLineEdit* lineOf(QWidget* editor)
{
    auto* line = qobject_cast<QLineEdit*>(editor);
    return line != nullptr ? line : editor->findChild<QLineEdit*>();
}

/// The number of a spin box in the value's own type; one that was not touched stays as it was.
QVariant takenNumber(const QSpinBox& box, const QVariant& before)
{
    if (box.value() == spinNumber(before))
        return before;
    if (typeOf(before) == QMetaType::UInt)
        return static_cast<uint>(box.value());
    return box.value();
}

/// What stands in an editor of a value of this type; invalid when it is another type's editor.
QVariant editorValue(QWidget* editor, const QVariant& before)
{
    const auto* choice = qobject_cast<QComboBox*>(editor);
    const auto* box = qobject_cast<QSpinBox*>(editor);
    const auto* number = qobject_cast<FloatSpinBox*>(editor);
    const auto* time = qobject_cast<QDateTimeEdit*>(editor);
    const QLineEdit* line = lineOf(editor);
    switch (typeOf(before)) {
    case QMetaType::QString:
        return line != nullptr ? line->text() : QVariant();
    case QMetaType::Bool:
        return choice != nullptr ? choice->currentIndex() == 1 : QVariant();
    case QMetaType::Int:
    case QMetaType::UInt:
        return box != nullptr ? takenNumber(*box, before) : QVariant();
    case QMetaType::Double:
        return number != nullptr ? number->doubleValue() : QVariant();
    case QMetaType::QDate:
        return time != nullptr ? time->date() : QVariant();
    case QMetaType::QTime:
        return time != nullptr ? time->time() : QVariant();
    case QMetaType::QDateTime:
        return time != nullptr ? time->dateTime() : QVariant();
    case QMetaType::QFont:
    case QMetaType::QPixmap:
    case QMetaType::QColor:
        // Its button wrote it already.
        return before;
    default:
        return {};
    }
}

QVariant chosenFile(const QString& before, const QString& filter, QWidget* parent)
{
    const QString chosen =
        QFileDialog::getOpenFileName(parent, Attributes::tr("Choose a file"), before, filter);
    return chosen.isEmpty() ? QVariant() : chosen;
}

QVariant chosenFont(const QFont& before, QWidget* parent)
{
    bool isChosen = false;
    const QFont font = QFontDialog::getFont(&isChosen, before, parent);
    return isChosen ? font : QVariant();
}

QVariant chosenColor(const QColor& before, QWidget* parent)
{
    const QColor color = QColorDialog::getColor(before, parent, QString(), QColorDialog::ShowAlphaChannel);
    return color.isValid() ? color : QVariant();
}

/// No edge of the picture is longer than `maximum`, unless that is 0.
QVariant chosenPixmap(QString filter, int maximum, QWidget* parent)
{
    if (filter.isEmpty()) {
        QStringList formats;
        for (const QByteArray& format : QImageReader::supportedImageFormats())
            formats.append(QLatin1String(format));
        filter = QStringLiteral("Images (*.%1)").arg(formats.join(QLatin1String(" *.")));
    }
    QPixmap picture(
        QFileDialog::getOpenFileName(parent, Attributes::tr("Choose an image"), QString(), filter));
    if (picture.isNull())
        return {};
    if (maximum > 0 && std::max(picture.width(), picture.height()) > maximum)
        picture = picture.scaled(maximum, maximum, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return picture;
}

} // namespace

void Attributes::takeEditor(Item& item)
{
    const auto* choice = qobject_cast<QComboBox*>(item.widget);
    const QVariant taken = item.choices.isEmpty() ? editorValue(item.widget, item.value)
                           : choice != nullptr    ? choice->currentText()
                                                  : QVariant();
    if (taken.isValid())
        item.value = taken;
    else
        logDebug("Attributes::dialog() internal error");
}

QVariant Attributes::ask(const Item& item) const
{
    const QString filter = item.option("filefilter").toString();
    switch (typeOf(item.value)) {
    case QMetaType::QString:
        return chosenFile(item.value.toString(), filter, item.widget);
    case QMetaType::QFont:
        return chosenFont(item.value.value<QFont>(), item.widget);
    case QMetaType::QPixmap:
        return chosenPixmap(filter, item.option("maximum").toInt(), item.widget);
    case QMetaType::QColor:
        return chosenColor(item.value.value<QColor>(), item.widget);
    default:
        logDebug("Attributes::mapped() internal error");
        return {};
    }
}

void Attributes::mapped(const QString& name)
{
    const Item* asked = find(name);
    if (asked == nullptr) {
        logDebug("Attributes::mapped() internal error");
        return;
    }
    const QVariant chosen = ask(Item(*asked));
    // The row may have gone while its dialog was open.
    Item* item = find(name);
    if (!chosen.isValid() || item == nullptr)
        return;
    item->value = chosen;
    if (auto* button = qobject_cast<QPushButton*>(item->widget))
        showOn(*button, chosen);
    else if (item->widget != nullptr && lineOf(item->widget) != nullptr)
        lineOf(item->widget)->setText(chosen.toString());
}

} // namespace tirn
