#pragma once

#include "QALog.h"
#include "sdk110widgets_export.h"

#include <QMetaObject>
#include <QPlainTextEdit>
#include <QString>

class QMenu;
class QTextCharFormat;
class QTextCursor;

// The output window: the text the driver scripts and the tools print, one
// message a line, in a read-only text editor. A double click on a line (or
// Return on the current line, or the "Edit selected file" menu entry)
// passes the line on through selectedLine(); connectToEditor() makes such a
// line open the file it names in the host's editor at the line it names
// (QAStAnalyseMsg), a relative name being taken from baseDirectory().
//
// A line holding noAction() is never passed on: the library marks with it
// the lines that look like messages but name no file to open.
//
// As a log sink, log() appends a line and error() appends a line in the
// error colour (red) and counts the fault until resetError().
class SDK110WIDGETS_EXPORT QAStOutputWidget : public QPlainTextEdit, public QALog {
    Q_OBJECT
public:
    // The ids of the context menu entries that have one (QAction::data()).
    enum MenuId { EditSelectionId = 1000, ClearWindowId = 1001 };

    // name becomes the object name; an editable window (readOnly false)
    // keeps the editor's own keys and only adds the menu and the double
    // click.
    explicit QAStOutputWidget(QWidget* parent = nullptr, const char* name = nullptr,
                              bool readOnly = true);

    // Adds text as a new line at the end (a final newline is dropped,
    // others start further lines).
    void append(const QString& text);
    // Adds text at the end as it comes: for the output of a process read
    // in chunks. A chunk continues the line the previous chunk left open
    // (it did not end with a newline); otherwise it starts a new line.
    // "\r" are dropped.
    void Append(const QString& text);

    // Asks the host for a text to find (proposing the last one) and finds
    // it; in batch mode or without a host the last text is found again.
    bool find();
    // Selects the next occurrence of text after the cursor, going on from
    // the start of the window when there is none after it; case is
    // ignored. False, with the cursor kept, when the text is nowhere.
    bool find(const QString& text);
    QString lastFound() const { return m_lastFind; }

    // Selects the whole line of the cursor and passes it on.
    void selectLine();
    // The text that keeps a line from being passed on.
    static QString noAction();

    // The context menu: "Edit selected file" (EditSelectionId), "Copy",
    // "Select All", "Find...", "Clear window" (ClearWindowId). The caller
    // owns it.
    QMenu* createContextMenu(QWidget* parent = nullptr);

    // The directory relative file names of the messages are taken from:
    // the directory the tools ran in (the project directory for the
    // driver scripts). The current directory when empty.
    QString baseDirectory() const { return m_baseDirectory; }
    void setBaseDirectory(const QString& directory) { m_baseDirectory = directory; }
    // While connected, every line passed on opens the file it names through
    // the host (QAStAnalyseMsg::editMessage with baseDirectory()); a line
    // that names no existing file opens nothing.
    void connectToEditor(bool connected = true);
    bool isConnectedToEditor() const { return bool(m_editorConnection); }

    // QALog
    void log(const QString& text) override;
    void error(const QString& text) override;

signals:
    // A line the user picked, as it is in the window.
    void selectedLine(const QString& text);

public slots:
    // Return or Enter in a read-only window: the current line is picked.
    void textEnter();
    // The selected text when it lies within one line, else the line of the
    // cursor, is passed on.
    void editSelection();

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void addLine(const QString& text, const QTextCharFormat& format);
    void insertAtEnd(const QString& text, const QTextCharFormat& format, bool continueLine);
    void pickLineOf(QTextCursor cursor);
    void passOn(const QString& text);

    // The last line came from Append and has not ended yet.
    bool m_openLine = false;
    QString m_lastFind;
    QString m_baseDirectory;
    QMetaObject::Connection m_editorConnection;
};
