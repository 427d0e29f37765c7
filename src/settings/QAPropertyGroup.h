#pragma once

#include "QAProperty.h"

#include <QList>
#include <QPixmap>

// A node of a descriptor tree: an ordered list of child properties, which
// may be groups themselves. The group owns its children and deletes them
// with itself; it holds no value of its own.
//
// Copying a group copies its own fields (those of every property, and its
// pictures) but not its children: a child belongs to one group and knows
// it, and the kinds of a tree are not all known here (plug-ins add their
// own), so a copy starts without children and an assignment keeps the
// children it has. A whole tree is made again from its description
// (QAPropertyMapLoader), not copied.
//
// The pictures shown for the group in the property tree are kept as icon
// file names; the pixmaps are made on demand and only when a
// QGuiApplication exists, so a command-line host builds trees without a
// display.
class SDK110_EXPORT QAPropertyGroup : public QAProperty {
public:
    explicit QAPropertyGroup(const QString& name = QString());
    // Copies the fields and pictures, not the children (see above).
    QAPropertyGroup(const QAPropertyGroup& other);
    QAPropertyGroup& operator=(const QAPropertyGroup& other);

    ~QAPropertyGroup() override;
    bool isGroup() const override;
    QString displayValue() const override;
    // True when a direct child is overridden.
    bool isOverriden() const override;
    bool isResetable() const override;
    void reset() override;
    void setValue(const QVariant& v) override;
    QVariant value() const override;
    QMetaType::Type type() const override;
    QWidget* createEditor(QWidget* parent) override;

    // Appends a child and takes ownership of it (leaving its former group).
    virtual void addChild(QAProperty* child);
    // Takes a child out of the group; ownership goes back to the caller.
    virtual void removeChild(QAProperty* child);

    // The first direct child whose tag is the key, or null.
    QAProperty* property(const QString& key) const;
    int count() const { return int(m_children.size()); }
    // Number of direct children that are groups.
    int nbGroup() const;
    // The children in order; owned by the group.
    const QList<QAProperty*>& children() const { return m_children; }

    const QString& openedPixName() const { return m_openedPix; }
    void setOpenedPix(const QString& iconFile) { m_openedPix = iconFile; }
    const QString& closedPixName() const { return m_closedPix; }
    void setClosedPix(const QString& iconFile) { m_closedPix = iconFile; }
    // The pictures; null without a QGuiApplication or an icon file.
    QPixmap openedPix() const;
    QPixmap closedPix() const;

private:
    QList<QAProperty*> m_children;
    QString m_openedPix;
    QString m_closedPix;
};
