#include "QAPropertyEditorFactory.h"

#include <QHash>

namespace {

QHash<QString, QAPropertyEditorFactory::Maker>& makers()
{
    static QHash<QString, QAPropertyEditorFactory::Maker> table;
    return table;
}

} // namespace

void QAPropertyEditorFactory::registerEditor(const QString& kind, Maker maker)
{
    makers().insert(kind, std::move(maker));
}

QWidget* QAPropertyEditorFactory::create(const QString& kind, QAProperty* property, QWidget* parent)
{
    const auto maker = makers().constFind(kind);
    return maker != makers().cend() && *maker ? (*maker)(property, parent) : nullptr;
}
