#include "QAStOutputWidget.h"

#include "QAStAnalyseMsg.h"
#include "QAStData.h"
#include "QAStProject.h"
#include "StudioInterface.h"

#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextDocument>

#include <memory>

namespace {

QTextCharFormat errorFormat()
{
    QTextCharFormat format;
    format.setForeground(QColor(0xc0, 0x00, 0x00));
    return format;
}

} // namespace

QAStOutputWidget::QAStOutputWidget(QWidget* parent, const char* name, bool readOnly)
    : QPlainTextEdit(parent)
{
    if (name)
        setObjectName(QString::fromUtf8(name));
    setReadOnly(readOnly);
    if (readOnly)
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setUndoRedoEnabled(false);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
}

void QAStOutputWidget::append(const QString& text)
{
    addLine(text, QTextCharFormat());
}

void QAStOutputWidget::Append(const QString& text)
{
    QString chunk = text;
    chunk.remove(u'\r');
    if (chunk.isEmpty())
        return;
    const bool endsLine = chunk.endsWith(u'\n');
    if (endsLine)
        chunk.chop(1);
    insertAtEnd(chunk, QTextCharFormat(), m_openLine);
    m_openLine = !endsLine;
}

void QAStOutputWidget::log(const QString& text)
{
    append(text);
}

void QAStOutputWidget::error(const QString& text)
{
    countError();
    addLine(text, errorFormat());
}

void QAStOutputWidget::addLine(const QString& text, const QTextCharFormat& format)
{
    QString line = text;
    line.remove(u'\r');
    if (line.endsWith(u'\n'))
        line.chop(1);
    insertAtEnd(line, format, false);
    m_openLine = false;
}

// Inserts at the end of the document, with format rather than the format
// of the user's cursor, and keeps the view at the bottom when it was there.
// An empty document's first line is used rather than a new one.
void QAStOutputWidget::insertAtEnd(const QString& text, const QTextCharFormat& format,
                                   bool continueLine)
{
    QScrollBar* bar = verticalScrollBar();
    const bool atBottom = bar->value() == bar->maximum();
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    end.beginEditBlock();
    if (!continueLine && !document()->isEmpty())
        end.insertBlock(QTextBlockFormat(), format);
    end.insertText(text, format);
    end.endEditBlock();
    if (atBottom)
        bar->setValue(bar->maximum());
}

bool QAStOutputWidget::find()
{
    QString text = m_lastFind;
    StudioInterface* host = QAStProject::modeBatch() ? nullptr : QAStData::studioIFace();
    if (host) {
        bool ok = false;
        text = host->getText(this, tr("Find"), tr("Text to find:"), m_lastFind, &ok);
        if (!ok)
            return false;
    }
    return !text.isEmpty() && find(text);
}

bool QAStOutputWidget::find(const QString& text)
{
    m_lastFind = text;
    if (text.isEmpty())
        return false;
    if (QPlainTextEdit::find(text))
        return true;
    const QTextCursor kept = textCursor();
    moveCursor(QTextCursor::Start);
    if (QPlainTextEdit::find(text))
        return true;
    setTextCursor(kept);
    return false;
}

QString QAStOutputWidget::noAction()
{
    return tr("(no action!!)");
}

void QAStOutputWidget::selectLine()
{
    pickLineOf(textCursor());
}

void QAStOutputWidget::textEnter()
{
    selectLine();
}

void QAStOutputWidget::editSelection()
{
    const QTextCursor cursor = textCursor();
    if (cursor.hasSelection()) {
        const QTextDocument* doc = document();
        if (doc->findBlock(cursor.selectionStart()) == doc->findBlock(cursor.selectionEnd())) {
            passOn(cursor.selectedText());
            return;
        }
    }
    pickLineOf(cursor);
}

void QAStOutputWidget::pickLineOf(QTextCursor cursor)
{
    cursor.clearSelection();
    cursor.movePosition(QTextCursor::StartOfBlock);
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    setTextCursor(cursor);
    passOn(cursor.block().text());
}

void QAStOutputWidget::passOn(const QString& text)
{
    if (text.contains(noAction()))
        return;
    emit selectedLine(text);
}

void QAStOutputWidget::connectToEditor(bool connected)
{
    if (connected == isConnectedToEditor())
        return;
    if (connected) {
        m_editorConnection = connect(this, &QAStOutputWidget::selectedLine, this,
                                     [this](const QString& line) {
                                         QAStAnalyseMsg::editMessage(line, m_baseDirectory);
                                     });
    } else {
        disconnect(m_editorConnection);
        m_editorConnection = QMetaObject::Connection();
    }
}

QMenu* QAStOutputWidget::createContextMenu(QWidget* parent)
{
    auto* menu = new QMenu(parent);
    const bool hasText = !document()->isEmpty();

    QAction* edit = menu->addAction(tr("Edit selected file"), this, &QAStOutputWidget::editSelection);
    edit->setData(int(EditSelectionId));
    edit->setEnabled(hasText);
    menu->addSeparator();
    menu->addAction(tr("Copy"), this, &QPlainTextEdit::copy)->setEnabled(textCursor().hasSelection());
    menu->addAction(tr("Select All"), this, &QPlainTextEdit::selectAll)->setEnabled(hasText);
    menu->addAction(tr("Find..."), this, [this] { find(); });
    menu->addSeparator();
    QAction* clearWindow = menu->addAction(tr("Clear window"), this, &QPlainTextEdit::clear);
    clearWindow->setData(int(ClearWindowId));
    return menu;
}

void QAStOutputWidget::contextMenuEvent(QContextMenuEvent* event)
{
    const std::unique_ptr<QMenu> menu(createContextMenu(this));
    menu->exec(event->globalPos());
}

void QAStOutputWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QPlainTextEdit::mouseDoubleClickEvent(event);
        return;
    }
    event->accept();
    // Below the last line there is no line to pick.
    const QPoint at = event->position().toPoint();
    const QTextCursor cursor = cursorForPosition(at);
    const QRectF line = blockBoundingGeometry(cursor.block()).translated(contentOffset());
    if (at.y() >= line.top() && at.y() < line.bottom())
        pickLineOf(cursor);
}

void QAStOutputWidget::keyPressEvent(QKeyEvent* event)
{
    if (isReadOnly() && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        event->accept();
        textEnter();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}
