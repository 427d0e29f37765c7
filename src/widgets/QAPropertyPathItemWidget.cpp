#include "QAPropertyPathItemWidget.h"

#include "QAPropertyPathItem.h"

#include <QLineEdit>

QAPropertyPathItemWidget::QAPropertyPathItemWidget(QAPropertyPathItem* property, QWidget* parent)
    : QAPropertyTextWidget(property, parent)
    , m_pathItem(property)
{
    refresh();
}

QAPropertyPathItemWidget::~QAPropertyPathItemWidget() = default;

void QAPropertyPathItemWidget::buttonClicked()
{
    QAPropertyFileChooser::Request request;
    request.caption = m_pathItem->name();
    request.startPath = lineEdit()->text();
    request.filters = m_pathItem->filters();
    request.mode = m_pathItem->mode();
    const QStringList chosen = QAPropertyFileChooser::choose(this, request);
    if (!chosen.isEmpty())
        commit(chosen.first());
}
