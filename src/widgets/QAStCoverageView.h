#pragma once

#include "QAStCoverageReport.h"
#include "sdk110widgets_export.h"

#include <QTreeWidget>

class QPlainTextEdit;

// The coverage of a test run: the source files of a coverage file
// (QAStCoverageReport), each with its functions below it, and their
// lines, branches and functions hit of total with the percentage,
// coloured by it: red below 50 %, amber below 80 %, green from 80 %. A
// file without the compiler's coverage shows the functions the runtime saw
// entered.
//
// A double click on a file or function asks for its source to be opened
// (sourceRequested, at the function's first line); markLines then marks
// the lines of the file that ran and those that did not in the editor
// that shows it.
class SDK110WIDGETS_EXPORT QAStCoverageView : public QTreeWidget {
    Q_OBJECT
public:
    enum Column { NameColumn, LinesColumn, BranchesColumn, FunctionsColumn };
    // The data role of a row's source file (absolute) and of its line.
    static constexpr int PathRole = Qt::UserRole + 1;
    static constexpr int LineRole = Qt::UserRole + 2;

    explicit QAStCoverageView(QWidget* parent = nullptr);

    // Shows the coverage file at path (none when empty); names are given
    // relative to setBaseDirectory's directory when they lie below it.
    void setFile(const QString& path);
    QString file() const { return m_file; }
    void setBaseDirectory(const QString& directory);
    // Reads the file again.
    void reload();

    const QAStCoverageReport& report() const { return m_report; }
    // The colour of a percentage of hit over total.
    static QColor colourOf(qint64 hit, qint64 total);
    // Marks the lines of file in editor, whose text is that file: those
    // that ran in green, those that did not in red; false when the report
    // has no coverage of the file.
    bool markLines(QPlainTextEdit* editor, const QString& file) const;

signals:
    void sourceRequested(const QString& file, int line);

private:
    void fill();
    void setCounts(QTreeWidgetItem* row, const QAStCoverageReport::Counts& counts);

    QString m_file;
    QString m_base;
    QAStCoverageReport m_report;
};
