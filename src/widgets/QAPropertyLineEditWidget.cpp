#include "QAPropertyLineEditWidget.h"

#include "QAPropertyLineEdit.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QVBoxLayout>

QAPropertyLineEditWidget::QAPropertyLineEditWidget(QAPropertyLineEdit* property, QWidget* parent)
    : QAPropertyTextWidget(property, parent)
{
    refresh();
}

QAPropertyLineEditWidget::~QAPropertyLineEditWidget() = default;

void QAPropertyLineEditWidget::buttonClicked()
{
    QDialog dialog(this);
    dialog.setWindowTitle(property()->name());
    auto* text = new QPlainTextEdit(property()->value().toString(), &dialog);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(text);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    if (dialog.exec() == QDialog::Accepted)
        commit(text->toPlainText());
}
