#pragma once

#include "sdk110widgets_export.h"

#include <QString>
#include <QWidget>

class QAStRecordReader;
class QAStResultFollower;
class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

// The base of the views that show a result file of a test run and follow
// it while the test runs: a summary line over a table. The view's reader
// is kept up to date by a follower (QAStResultFollower): cleared when the
// file is emptied or replaced, fed with the lines it gains; after every
// change the view fills its table again (refresh()).
//
// A view of another result file derives from it, gives its reader and
// fills the table in refresh().
class SDK110WIDGETS_EXPORT QAStResultFileView : public QWidget {
    Q_OBJECT
public:
    // Follows file (an empty name shows nothing).
    virtual void follow(const QString& file);
    void stop();
    // Reads what the file gained now.
    virtual void poll();
    QString fileName() const;

    QTreeWidget* table() const { return m_table; }
    QString summaryText() const;

signals:
    // The table was filled again.
    void refreshed();

protected:
    // reader: the subclass's, which outlives the view's following.
    QAStResultFileView(QAStRecordReader* reader, const QStringList& columns, QWidget* parent);
    ~QAStResultFileView() override;

    // Fills the table and the summary from the reader.
    virtual void refresh() = 0;
    void setSummary(const QString& text);
    // Redraws at once.
    void redraw();
    // A row of texts; a number goes in as a number, so that it sorts as
    // one.
    static QTreeWidgetItem* row(const QVariantList& values);
    QAStRecordReader* reader() const { return m_reader; }
    // "<file>: n line(s) skipped, ..." when the reader skipped some, else
    // empty.
    QString skippedNote() const;

private:
    QAStRecordReader* m_reader;
    QAStResultFollower* m_follower;
    QTreeWidget* m_table;
    QLabel* m_summary;
};
