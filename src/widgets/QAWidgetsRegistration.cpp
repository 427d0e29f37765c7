// What the widgets library gives the core library when it is loaded: the
// editors of the property kinds, the file dialog of the path editors, the
// filters dialog and the project view's menus.
#include "QAFiltersMgrEditor.h"
#include "QAPropertyBool.h"
#include "QAPropertyBoolWidget.h"
#include "QAPropertyComboInt.h"
#include "QAPropertyComboIntWidget.h"
#include "QAPropertyComboString.h"
#include "QAPropertyComboStringWidget.h"
#include "QAPropertyEditorFactory.h"
#include "QAPropertyFileChooser.h"
#include "QAPropertyInt.h"
#include "QAPropertyIntWidget.h"
#include "QAPropertyLineEdit.h"
#include "QAPropertyLineEditWidget.h"
#include "QAPropertyListBox.h"
#include "QAPropertyListBoxWidget.h"
#include "QAPropertyPathBox.h"
#include "QAPropertyPathBoxWidget.h"
#include "QAPropertyPathItem.h"
#include "QAPropertyPathItemWidget.h"
#include "QAStAFunctionTag.h"
#include "QAStATag.h"
#include "QAStMenus.h"
#include "QAStNode.h"
#include "QATr.h"

#include <QAction>
#include <QCoreApplication>
#include <QFileDialog>
#include <QMenu>
#include <QPointer>

namespace {

QStringList chooseWithFileDialog(QWidget* parent, const QAPropertyFileChooser::Request& request)
{
    QFileDialog dialog(parent, request.caption, request.startPath,
                       QAPropertyFileChooser::filterString(request.filters));
    switch (request.mode) {
    case QAPropertyFileChooser::ExistingFile:
        dialog.setFileMode(QFileDialog::ExistingFile);
        break;
    case QAPropertyFileChooser::AnyFile:
        dialog.setFileMode(QFileDialog::AnyFile);
        break;
    case QAPropertyFileChooser::Directory:
        dialog.setFileMode(QFileDialog::Directory);
        break;
    case QAPropertyFileChooser::DirectoryOnly:
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
        break;
    case QAPropertyFileChooser::ExistingFiles:
        dialog.setFileMode(QFileDialog::ExistingFiles);
        break;
    }
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles() : QStringList();
}

template <class Widget, class Kind>
void registerEditor(const char* kind)
{
    QAPropertyEditorFactory::registerEditor(QLatin1String(kind), [](QAProperty* property, QWidget* parent) {
        return static_cast<QWidget*>(new Widget(static_cast<Kind*>(property), parent));
    });
}

// "Add": an entry per kind the node takes, each adding a fresh node.
QMenu* addChildMenu(QAStNode* node, QWidget* parent)
{
    auto* menu = new QMenu(QATr::widgets("Add"), parent);
    for (const QString& tag : node->addableChildKinds()) {
        QAction* action = menu->addAction(QAStNode::kindLabel(tag));
        action->setData(tag);
        QObject::connect(action, &QAction::triggered, node, [node, tag] { node->addNewChild(tag); });
    }
    return menu;
}

QMenu* nodeMenu(QAStNode* node, QWidget* parent)
{
    auto* menu = new QMenu(parent);
    QMenu* add = node->addChildPopupMenu(menu);
    if (add && add->isEmpty())
        delete add;
    else if (add)
        menu->addMenu(add);
    return menu;
}

QMenu* tagMenu(QAStATag* tag, QWidget* parent, QAStNode* testParent)
{
    auto* menu = new QMenu(parent);
    QObject::connect(menu->addAction(QATr::widgets("Edit")),
                     &QAction::triggered, tag, &QAStATag::edit);
    tag->localActionMenuItems(menu);
    if (testParent && tag->canBeTested()) {
        menu->addSeparator();
        QPointer<QAStNode> target(testParent);
        QObject::connect(menu->addAction(QATr::widgets("Test")),
                         &QAction::triggered, tag, [tag, target] {
                             if (target)
                                 tag->test(target);
                         });
    }
    return menu;
}

void functionEntries(QAStAFunctionTag* tag, QMenu* menu)
{
    QAction* declared = menu->addAction(QATr::widgets("Edit Declaration"));
    declared->setEnabled(tag->declaration() != nullptr);
    QObject::connect(declared, &QAction::triggered, tag, &QAStAFunctionTag::editDeclaration);
    QAction* implemented =
        menu->addAction(QATr::widgets("Edit Implementation"));
    implemented->setEnabled(tag->implementation() != nullptr);
    QObject::connect(implemented, &QAction::triggered, tag, &QAStAFunctionTag::editImplementation);
}

struct Registration {
    Registration()
    {
        QAPropertyFileChooser::setDefaultChooser(&chooseWithFileDialog);
        registerEditor<QAPropertyIntWidget, QAPropertyInt>("Int");
        registerEditor<QAPropertyComboIntWidget, QAPropertyComboInt>("ComboInt");
        registerEditor<QAPropertyBoolWidget, QAPropertyBool>("Bool");
        registerEditor<QAPropertyLineEditWidget, QAPropertyLineEdit>("LineEdit");
        registerEditor<QAPropertyComboStringWidget, QAPropertyComboString>("ComboString");
        registerEditor<QAPropertyPathItemWidget, QAPropertyPathItem>("PathItem");
        registerEditor<QAPropertyListBoxWidget, QAPropertyListBox>("ListBox");
        registerEditor<QAPropertyPathBoxWidget, QAPropertyPathBox>("PathBox");
        QAFiltersMgrEditorView::setMaker([](QAFiltersMgr* manager, QWidget* parent) {
            return static_cast<QAFiltersMgrEditorView*>(new QAFiltersMgrEditor(manager, parent));
        });
        QAStMenus::setNodeMenu(&nodeMenu, &addChildMenu);
        QAStMenus::setTagMenu(&tagMenu, &functionEntries);
    }
};

const Registration registration;

} // namespace
