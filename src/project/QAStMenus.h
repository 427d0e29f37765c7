#pragma once

#include "sdk110_export.h"

#include <functional>

class QAStAFunctionTag;
class QAStATag;
class QAStNode;
class QMenu;
class QWidget;

// The pop-up menus of the project view's items. Menus are widgets: the
// widgets library makes them, and registers its makers here when it is
// loaded; the items' popupMenu, addChildPopupMenu and localActionMenuItems
// ask them. Without the widgets library an item has no menu (null).
class SDK110_EXPORT QAStMenus {
public:
    // A node's menu, and its "Add" menu of the kinds it takes.
    using NodeMenu = std::function<QMenu*(QAStNode* node, QWidget* parent)>;
    // A tag's menu: "Edit", its kind's own entries, "Test" below testParent.
    using TagMenu = std::function<QMenu*(QAStATag* tag, QWidget* parent, QAStNode* testParent)>;
    // The entries a function tag adds to its menu.
    using FunctionEntries = std::function<void(QAStAFunctionTag* tag, QMenu* menu)>;

    static void setNodeMenu(NodeMenu popup, NodeMenu addChild);
    static void setTagMenu(TagMenu popup, FunctionEntries functionEntries);

    static QMenu* nodeMenu(QAStNode* node, QWidget* parent);
    static QMenu* addChildMenu(QAStNode* node, QWidget* parent);
    static QMenu* tagMenu(QAStATag* tag, QWidget* parent, QAStNode* testParent);
    static void functionEntries(QAStAFunctionTag* tag, QMenu* menu);
};
