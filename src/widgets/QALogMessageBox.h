#pragma once

#include "QALog.h"
#include "sdk110widgets_export.h"

#include <QPointer>
#include <QString>
#include <QWidget>

// Logging to message boxes: log() shows a warning box, error() a critical
// box, with the title as caption and the text as message. The boxes are
// the host's (StudioInterface::warning, StudioInterface::critical), over
// the parent widget, else the studio's main window. In batch mode
// (QAStProject::modeBatch()) or without a host no box is shown: the text
// goes to the message console (the Qt warning channel without a host).
class SDK110WIDGETS_EXPORT QALogMessageBox : public QALog {
public:
    explicit QALogMessageBox(const QString& title, QWidget* parent = nullptr);

    void log(const QString& text) override;
    void error(const QString& text) override;

    QString title() const { return m_title; }
    void setTitle(const QString& title) { m_title = title; }
    QWidget* parentWidget() const { return m_parent; }

private:
    enum class Box { Warning, Critical };
    void show(Box box, const QString& text) const;

    QString m_title;
    QPointer<QWidget> m_parent;
};
