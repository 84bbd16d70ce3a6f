#pragma once

#include <vector>

#include <QObject>
#include <QString>
#include <QVariant>

class QDialog;
class QFormLayout;
class QLabel;
class QWidget;

namespace tirn {

using StringVariantMap = QMap<QString, QVariant>;

/// Named values that make a dialog of themselves, one row a value in the order in which they were added.
///
/// Values may be String (a ByteArray becomes one), StringList, Font, Pixmap, Color, Int, UInt, Bool, Double,
/// Date, Time and DateTime. Options of every row: `hidden`, `readonly`, `helptext`, and `disabledwhile`, the
/// name of a Bool that disables the row while it is true. Others by type: String and Pixmap `filefilter`,
/// Pixmap `maximum` (the longest edge), StringList `selected` (index or text), Int and UInt `prefix`,
/// `suffix`, `minimum`, `maximum`, `lineStep`, Double the last three, dates and times `earliest`, `latest`.
class Attributes : public QObject
{
    Q_OBJECT

public:
    explicit Attributes(QObject* parent = nullptr) : QObject(parent) {}

    /// Shows the rows until they are accepted or not. Accepting writes what stands in the editors into the
    /// values; of a StringList the chosen text is the value from then on. What a button's dialog chose is
    /// kept at once.
    bool dialog(const QString& caption, QWidget* parent = nullptr);

    /// The value of a name, invalid when there is none.
    QVariant value(const QString& name) const;
    bool contains(const QString& name) const { return find(name) != nullptr; }
    QVariant option(const QString& name, const QString& option) const;

public Q_SLOTS:
    void setAttribute(const QString& name, QVariant value) { setAttribute(name, std::move(value), {}); }
    /// Replaces the value of a name, and those of its options that are given, or adds it.
    void setAttribute(const QString& name, QVariant value, const StringVariantMap& options);
    void removeAttribute(const QString& name);
    void clear();

private Q_SLOTS:
    /// Asks for the value of a row with a button.
    void mapped(const QString& name);

private:
    struct Item
    {
        QString name;
        QVariant value;
        StringVariantMap options;
        /// The texts to choose from, once the value is one of them.
        QStringList choices;
        /// Null while there is no dialog.
        QWidget* widget = nullptr;
        QLabel* label = nullptr;

        QVariant option(const char* key) const { return options.value(QLatin1String(key)); }
    };

    const Item* find(const QString& name) const;
    Item* find(const QString& name);
    void addRows(QDialog& dialog, QFormLayout& rows);
    void disableByOthers();
    QWidget* makeEditor(Item& item, QWidget* parent);
    QWidget* makeLine(const Item& item, QWidget* parent);
    QWidget* makeChoice(Item& item, QWidget* parent);
    QWidget* makeButton(const Item& item, QWidget* parent);
    void takeEditor(Item& item);
    QVariant ask(const Item& item) const;

    std::vector<Item> m_items;
};

/// The label with an accelerator: the first of its letters and digits that still stands in `free`, which
/// loses it. A label without one has none.
QString withAccelerator(const QString& label, QString& free);

} // namespace tirn
