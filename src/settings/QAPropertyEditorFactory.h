#pragma once

#include "sdk110_export.h"

#include <QString>

#include <functional>

class QAProperty;
class QWidget;

// The editing widgets of the property kinds, which live in the widgets
// library: each kind's createEditor asks for the editor of its kind name
// ("Int", "Bool", "LineEdit", ...), and the widgets library registers a
// maker for every kind when it is loaded. A kind of a plug-in registers its
// own. Without a maker (a program without widgets) there is no editor.
class SDK110_EXPORT QAPropertyEditorFactory {
public:
    using Maker = std::function<QWidget*(QAProperty* property, QWidget* parent)>;

    static void registerEditor(const QString& kind, Maker maker);
    // The editor of property, of the kind named kind; null without a maker.
    static QWidget* create(const QString& kind, QAProperty* property, QWidget* parent);
};
