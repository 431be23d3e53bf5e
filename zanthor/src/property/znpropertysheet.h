#pragma once
#include <QList>
#include <QString>
#include <QVariant>
#include <QVariantMap>

// One row of a property sheet: what the host's property browser shows and edits. A
// value type; the browser widget that displays it is not part of the model.
struct ZNProperty {
    enum Kind {
        String,  // QString value
        Int,     // int value; "minimum", "maximum", "singleStep" attributes
        Double,  // double value; same attributes
        Bool,    // bool value
        Enum,    // int value, the index into "enumNames" (and "enumIcons")
        Color,   // QColor value
    };

    // Attribute names understood by the browser.
    static QString minimum() { return QStringLiteral("minimum"); }
    static QString maximum() { return QStringLiteral("maximum"); }
    static QString singleStep() { return QStringLiteral("singleStep"); }
    // QStringList: the label of each enumeration value.
    static QString enumNames() { return QStringLiteral("enumNames"); }
    // QVariantList of QImage: the icon of each enumeration value, in value order.
    static QString enumIcons() { return QStringLiteral("enumIcons"); }
    // QImage: the row's own icon, shown beside its label.
    static QString icon() { return QStringLiteral("icon"); }

    QString id;            // what updates are addressed with
    QString label;         // what the user reads; may differ from the id
    Kind kind = String;
    QVariant value;
    QString editor;        // the browser's editor for this row ("StyleSettings"); empty: the kind's own
    bool readOnly = false;
    bool enabled = true;
    QVariantMap attributes;

    // Sets the "minimum", "maximum" and "singleStep" attributes of a numeric row.
    void setRange(int first, int last, int step)
    {
        setAttribute(minimum(), first);
        setAttribute(maximum(), last);
        setAttribute(singleStep(), step);
    }
    // The integer an edit hands in, when it is one of first..last: then written into
    // `out` (true); false, `out` untouched, otherwise.
    static bool intValueIn(const QVariant& value, int first, int last, int& out)
    {
        bool ok = false;
        const int v = value.toInt(&ok);
        if (!ok || v < first || v > last) return false;
        out = v;
        return true;
    }

    // The attribute `name`; an invalid QVariant when it is not set.
    QVariant attribute(const QString& name) const { return attributes.value(name); }
    void setAttribute(const QString& name, const QVariant& v) { attributes.insert(name, v); }
};

// A property sheet: named groups of rows, in the order they were added. Row ids are
// unique within the sheet by convention; lookups return the first row with an id.
class ZNPropertySheet {
public:
    struct Group {
        QString name;
        QList<ZNProperty> properties;
    };

    // Adds an empty group named `name` unless one exists; returns its index.
    int addGroup(const QString& name);
    // Appends a row to the group `group` (created when missing) and returns it for its
    // attributes and flags to be set. The reference is valid until the next addition.
    ZNProperty& addProperty(const QString& group, const QString& id, const QString& label,
                            ZNProperty::Kind kind, const QVariant& value);

    const QList<Group>& groups() const { return m_groups; }
    // The group named `name`; null when there is none. Owned by the sheet.
    const Group* group(const QString& name) const;
    // The first row whose id is `id`; null when there is none. Owned by the sheet and
    // valid until the next addition.
    ZNProperty* property(const QString& id);
    const ZNProperty* property(const QString& id) const;
    // Sets the value of the row `id`; false when there is no such row.
    bool setValue(const QString& id, const QVariant& value);
    // Number of rows over all groups.
    int count() const;
    void clear() { m_groups.clear(); }

private:
    QList<Group> m_groups;
};
