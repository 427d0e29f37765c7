#include "QAPropertyPathBoxWidget.h"

#include "QAPropertyPathBox.h"

#include <QListWidget>
#include <QPushButton>

QAPropertyPathBoxWidget::QAPropertyPathBoxWidget(QAPropertyPathBox* property, QWidget* parent)
    : QAPropertyStringListWidget(property, parent)
    , m_pathBox(property)
{
    createButtons();
    refresh();
}

QAPropertyPathBoxWidget::~QAPropertyPathBoxWidget() = default;

void QAPropertyPathBoxWidget::createButtons()
{
    const QAPropertyPathBox::Buttons layout = m_pathBox->buttons();
    if (layout == QAPropertyPathBox::NoButton)
        return;
    const bool single = layout == QAPropertyPathBox::Single
        || layout == QAPropertyPathBox::SingleWithoutMoves;
    if (single) {
        connect(addButton(QStringLiteral("add"), tr("Add...")), &QPushButton::clicked, this,
                &QAPropertyPathBoxWidget::addPaths);
    } else {
        connect(addButton(QStringLiteral("addFile"), tr("Add file...")), &QPushButton::clicked,
                this, &QAPropertyPathBoxWidget::addFiles);
        connect(addButton(QStringLiteral("addDirectory"), tr("Add directory...")),
                &QPushButton::clicked, this, &QAPropertyPathBoxWidget::addDirectory);
    }
    addRemoveButton();
    if (layout == QAPropertyPathBox::Single || layout == QAPropertyPathBox::MultiWithMoves)
        addMoveButtons();
}

void QAPropertyPathBoxWidget::addPaths()
{
    choosePaths(m_pathBox->mode());
}

void QAPropertyPathBoxWidget::addFiles()
{
    choosePaths(QAPropertyFileChooser::ExistingFiles);
}

void QAPropertyPathBoxWidget::addDirectory()
{
    choosePaths(QAPropertyFileChooser::Directory);
}

void QAPropertyPathBoxWidget::choosePaths(QAPropertyFileChooser::Mode mode)
{
    QAPropertyFileChooser::Request request;
    request.caption = m_pathBox->name();
    if (QListWidgetItem* current = listWidget()->currentItem())
        request.startPath = current->text();
    request.filters = m_pathBox->filters();
    request.mode = mode;
    appendItems(QAPropertyFileChooser::choose(this, request));
}
