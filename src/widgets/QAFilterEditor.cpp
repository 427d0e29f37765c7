#include "QAFilterEditor.h"

#include "QAFEExprGroupWidget.h"
#include "QAFilter.h"
#include "QAFilterExprGroup.h"

#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QVBoxLayout>

QAFilterEditor::QAFilterEditor(QAFilter* filter, QWidget* parent)
    : QDialog(parent)
    , m_filter(filter)
{
    setWindowTitle(tr("Filter"));

    m_name = new QLineEdit(filter->filterName(), this);
    m_name->setObjectName(QStringLiteral("nameEdit"));
    m_wildcard = new QRadioButton(tr("Wildcard"), this);
    m_wildcard->setObjectName(QStringLiteral("wildcardButton"));
    m_regExp = new QRadioButton(tr("Regular expression"), this);
    m_regExp->setObjectName(QStringLiteral("regExpButton"));
    auto* textChoice = new QButtonGroup(this);
    textChoice->addButton(m_wildcard);
    textChoice->addButton(m_regExp);
    (filter->useWildcard() ? m_wildcard : m_regExp)->setChecked(true);
    auto* textKind = new QHBoxLayout;
    textKind->addWidget(m_wildcard);
    textKind->addWidget(m_regExp);
    textKind->addStretch();

    auto* form = new QFormLayout;
    form->addRow(tr("Name:"), m_name);
    form->addRow(tr("Text:"), textKind);

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("groupTabs"));

    m_addGroup = new QPushButton(tr("Add group"), this);
    m_addGroup->setObjectName(QStringLiteral("addGroupButton"));
    m_removeGroup = new QPushButton(tr("Remove group"), this);
    m_removeGroup->setObjectName(QStringLiteral("removeGroupButton"));
    connect(m_addGroup, &QPushButton::clicked, this, &QAFilterEditor::addGroup);
    connect(m_removeGroup, &QPushButton::clicked, this, &QAFilterEditor::removeGroup);
    auto* groupButtons = new QHBoxLayout;
    groupButtons->addWidget(m_addGroup);
    groupButtons->addWidget(m_removeGroup);
    groupButtons->addStretch();

    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QAFilterEditor::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QAFilterEditor::reject);
    connect(m_name, &QLineEdit::textChanged, this, &QAFilterEditor::updateButtons);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_tabs, 1);
    layout->addLayout(groupButtons);
    layout->addWidget(m_buttons);

    for (QAFilterExprGroup* group : filter->groups())
        addPage(group);
    updateButtons();
}

QAFilterEditor::~QAFilterEditor()
{
    // The pages point at the groups: drop them first.
    while (m_tabs->count() > 0)
        delete m_tabs->widget(0);
    qDeleteAll(m_newGroups);
}

int QAFilterEditor::groupCount() const
{
    return m_tabs->count();
}

QAFEExprGroupWidget* QAFilterEditor::groupWidget(int index) const
{
    return qobject_cast<QAFEExprGroupWidget*>(m_tabs->widget(index));
}

void QAFilterEditor::addGroup()
{
    QAFilterExprGroup* group = m_filter->createGroup();
    if (!group)
        return;
    m_newGroups.append(group);
    addPage(group);
    groupWidget(groupCount() - 1)->more();
    m_tabs->setCurrentIndex(groupCount() - 1);
}

void QAFilterEditor::removeGroup()
{
    QAFEExprGroupWidget* page = groupWidget(m_tabs->currentIndex());
    if (!page)
        return;
    QAFilterExprGroup* group = page->group();
    delete page;
    // A group of the filter stays with it until apply() drops it.
    if (m_newGroups.removeOne(group))
        delete group;
    updateTitles();
    updateButtons();
}

void QAFilterEditor::apply()
{
    m_filter->setFilterName(m_name->text());
    m_filter->setUseWildcard(m_wildcard->isChecked());

    QList<QAFilterExprGroup*> kept;
    for (int i = 0; i < groupCount(); ++i) {
        groupWidget(i)->apply();
        kept.append(groupWidget(i)->group());
    }
    while (QAFilterExprGroup* group = m_filter->takeGroup(0)) {
        if (!kept.contains(group))
            delete group;
    }
    for (QAFilterExprGroup* group : std::as_const(kept)) {
        m_filter->addGroup(group);
        m_newGroups.removeOne(group);
    }
    m_filter->setModified(true);
}

void QAFilterEditor::accept()
{
    if (m_name->text().trimmed().isEmpty())
        return;
    apply();
    QDialog::accept();
}

void QAFilterEditor::addPage(QAFilterExprGroup* group)
{
    m_tabs->addTab(new QAFEExprGroupWidget(group, m_tabs), QString());
    updateTitles();
    updateButtons();
}

void QAFilterEditor::updateTitles()
{
    for (int i = 0; i < m_tabs->count(); ++i)
        m_tabs->setTabText(i, tr("Group %1").arg(i + 1));
}

void QAFilterEditor::updateButtons()
{
    m_removeGroup->setEnabled(m_tabs->count() > 0);
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(!m_name->text().trimmed().isEmpty());
}
