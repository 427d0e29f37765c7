#include "QAStMenus.h"

namespace {

struct Makers {
    QAStMenus::NodeMenu node;
    QAStMenus::NodeMenu addChild;
    QAStMenus::TagMenu tag;
    QAStMenus::FunctionEntries function;
};

Makers& makers()
{
    static Makers registered;
    return registered;
}

} // namespace

void QAStMenus::setNodeMenu(NodeMenu popup, NodeMenu addChild)
{
    makers().node = std::move(popup);
    makers().addChild = std::move(addChild);
}

void QAStMenus::setTagMenu(TagMenu popup, FunctionEntries functionEntries)
{
    makers().tag = std::move(popup);
    makers().function = std::move(functionEntries);
}

QMenu* QAStMenus::nodeMenu(QAStNode* node, QWidget* parent)
{
    return makers().node ? makers().node(node, parent) : nullptr;
}

QMenu* QAStMenus::addChildMenu(QAStNode* node, QWidget* parent)
{
    return makers().addChild ? makers().addChild(node, parent) : nullptr;
}

QMenu* QAStMenus::tagMenu(QAStATag* tag, QWidget* parent, QAStNode* testParent)
{
    return makers().tag ? makers().tag(tag, parent, testParent) : nullptr;
}

void QAStMenus::functionEntries(QAStAFunctionTag* tag, QMenu* menu)
{
    if (makers().function)
        makers().function(tag, menu);
}
