#include "QAFiltersMgrEditorView.h"

namespace {

QAFiltersMgrEditorView::Maker& maker()
{
    static QAFiltersMgrEditorView::Maker registered;
    return registered;
}

} // namespace

QAFiltersMgrEditorView::~QAFiltersMgrEditorView() = default;

void QAFiltersMgrEditorView::setMaker(Maker made)
{
    maker() = std::move(made);
}

QAFiltersMgrEditorView* QAFiltersMgrEditorView::make(QAFiltersMgr* manager, QWidget* parent)
{
    return maker() ? maker()(manager, parent) : nullptr;
}
