#pragma once

#include "sdk110_export.h"

#include <functional>

class QAFilter;
class QAFiltersMgr;
class QObject;
class QWidget;

// The editing dialog of a filters manager as the manager sees it. The
// dialog itself (QAFiltersMgrEditor) lives in the widgets library, which
// registers its maker (setMaker) when it is loaded; without it a manager
// has no editor and edit() returns false.
class SDK110_EXPORT QAFiltersMgrEditorView {
public:
    using Maker = std::function<QAFiltersMgrEditorView*(QAFiltersMgr* manager, QWidget* parent)>;

    virtual ~QAFiltersMgrEditorView();

    // The dialog's object, whose destruction the manager follows.
    virtual QObject* object() = 0;
    // Shows a filter appended to the manager.
    virtual void filterAdded(QAFilter* filter) = 0;
    // Shows a change of a filter's enabled flag made outside the dialog.
    virtual void updateEnabled(QAFilter* filter) = 0;
    // Shows every filter again.
    virtual void refresh() = 0;
    virtual bool isModified() const = 0;
    virtual void setModified(bool modified) = 0;
    // Runs the dialog modally; its result.
    virtual int exec() = 0;

    static void setMaker(Maker maker);
    // A new dialog of manager; null without a maker.
    static QAFiltersMgrEditorView* make(QAFiltersMgr* manager, QWidget* parent);
};
