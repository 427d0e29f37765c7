#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

// The labelled values offered by a combo kind, in insertion order.
template <class V>
class SDK110_EXPORT QAPropertyComboItems {
public:
    void insert(const QString& text, const V& value) { m_items.append(qMakePair(text, value)); }

    QStringList texts() const
    {
        QStringList texts;
        for (const auto& item : m_items)
            texts << item.first;
        return texts;
    }

    QList<V> values() const
    {
        QList<V> values;
        for (const auto& item : m_items)
            values << item.second;
        return values;
    }

    // The label of the first item holding the value; fallback when none does.
    QString labelOf(const V& value, const QString& fallback) const
    {
        for (const auto& item : m_items) {
            if (item.second == value)
                return item.first;
        }
        return fallback;
    }

private:
    QList<QPair<QString, V>> m_items;
};
