#include "QALogMessageBox.h"

#include "QAStData.h"
#include "QAStProject.h"
#include "StudioInterface.h"

#include <QMainWindow>

QALogMessageBox::QALogMessageBox(const QString& title, QWidget* parent)
    : m_title(title)
    , m_parent(parent)
{
}

void QALogMessageBox::log(const QString& text)
{
    show(Box::Warning, text);
}

void QALogMessageBox::error(const QString& text)
{
    countError();
    show(Box::Critical, text);
}

void QALogMessageBox::show(Box box, const QString& text) const
{
    StudioInterface* host = QAStData::studioIFace();
    if (QAStProject::modeBatch() || !host) {
        QAStData::displayMessage(QAStData::MessageConsole, text);
        return;
    }
    QWidget* parent = m_parent ? m_parent.data() : QAStData::mainWindow();
    if (box == Box::Warning)
        host->warning(parent, m_title, text);
    else
        host->critical(parent, m_title, text);
}
