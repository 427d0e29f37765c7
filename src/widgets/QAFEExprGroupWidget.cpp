#include "QAFEExprGroupWidget.h"

#include "QAFilterExpr.h"
#include "QAFilterExprGroup.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

QAFEExprGroupWidget::QAFEExprGroupWidget(QAFilterExprGroup* group, QWidget* parent)
    : QWidget(parent)
    , m_group(group)
{
    m_all = new QRadioButton(tr("All"), this);
    m_all->setObjectName(QStringLiteral("allButton"));
    m_any = new QRadioButton(tr("Any"), this);
    m_any->setObjectName(QStringLiteral("anyButton"));
    auto* choice = new QButtonGroup(this);
    choice->addButton(m_all);
    choice->addButton(m_any);
    m_enabled = new QCheckBox(tr("Enabled"), this);
    m_enabled->setObjectName(QStringLiteral("enabledBox"));
    m_invert = new QCheckBox(tr("Invert"), this);
    m_invert->setObjectName(QStringLiteral("invertBox"));

    auto* head = new QHBoxLayout;
    head->addWidget(new QLabel(tr("Match:"), this));
    head->addWidget(m_all);
    head->addWidget(m_any);
    head->addStretch();
    head->addWidget(m_enabled);
    head->addWidget(m_invert);

    m_rowLayout = new QGridLayout;
    m_rowLayout->setColumnStretch(1, 1);

    m_more = new QPushButton(tr("More"), this);
    m_more->setObjectName(QStringLiteral("moreButton"));
    m_fewer = new QPushButton(tr("Fewer"), this);
    m_fewer->setObjectName(QStringLiteral("fewerButton"));
    connect(m_more, &QPushButton::clicked, this, &QAFEExprGroupWidget::more);
    connect(m_fewer, &QPushButton::clicked, this, &QAFEExprGroupWidget::fewer);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_more);
    buttons->addWidget(m_fewer);
    buttons->addStretch();

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(head);
    layout->addLayout(m_rowLayout);
    layout->addLayout(buttons);
    layout->addStretch();

    (group->matchAll() ? m_all : m_any)->setChecked(true);
    m_enabled->setChecked(group->enabled());
    m_invert->setChecked(group->invertFilter());
    for (const QAFilterExpr* expr : group->exprList())
        addRow(expr->type(), expr->text(), expr->caseSensitive());
    updateButtons();
}

QAFEExprGroupWidget::~QAFEExprGroupWidget() = default;

void QAFEExprGroupWidget::more()
{
    addRow(0, QString(), false);
    updateButtons();
}

void QAFEExprGroupWidget::fewer()
{
    if (m_rows.isEmpty())
        return;
    const Row row = m_rows.takeLast();
    delete row.type;
    delete row.text;
    delete row.caseSensitive;
    updateButtons();
}

void QAFEExprGroupWidget::apply()
{
    m_group->setMatchAll(m_all->isChecked());
    m_group->setEnabled(m_enabled->isChecked());
    m_group->setInvertFilter(m_invert->isChecked());
    m_group->clearExprs();
    for (const Row& row : std::as_const(m_rows)) {
        QAFilterExpr* expr = m_group->createExpr();
        expr->setType(row.type->currentData().toUInt());
        expr->setText(row.text->text());
        expr->setCaseSensitive(row.caseSensitive->isChecked());
        m_group->addExpr(expr);
    }
}

void QAFEExprGroupWidget::addRow(quint32 type, const QString& text, bool caseSensitive)
{
    Row row;
    row.type = new QComboBox(this);
    row.type->setObjectName(QStringLiteral("typeBox"));
    const int types = m_group->exprCount();
    for (int t = 0; t < types; ++t)
        row.type->addItem(m_group->typeName(quint32(t)), quint32(t));
    int index = row.type->findData(type);
    if (index < 0) {
        // A type the family does not list is kept as it is.
        row.type->addItem(m_group->typeName(type), type);
        index = row.type->count() - 1;
    }
    row.type->setCurrentIndex(index);
    row.text = new QLineEdit(text, this);
    row.text->setObjectName(QStringLiteral("textEdit"));
    row.caseSensitive = new QCheckBox(tr("Case sensitive"), this);
    row.caseSensitive->setObjectName(QStringLiteral("caseBox"));
    row.caseSensitive->setChecked(caseSensitive);

    // Rows are only ever appended and dropped from the end, so the grid row
    // of a new row is the number of rows before it.
    const int at = int(m_rows.size());
    m_rowLayout->addWidget(row.type, at, 0);
    m_rowLayout->addWidget(row.text, at, 1);
    m_rowLayout->addWidget(row.caseSensitive, at, 2);
    m_rows.append(row);
}

void QAFEExprGroupWidget::updateButtons()
{
    m_fewer->setEnabled(!m_rows.isEmpty());
}
