#pragma once

#include "QAStNode.h"

#include <QHash>
#include <QPointer>
#include <QWidget>

class QAProperty;
class QAPropertyGroup;
class QAStConfiguration;
class QLabel;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;

// The property sheet of a node: the settings of its current configuration
// that apply to the node (QAStNode::visibleSettings), grouped as the
// settings descriptor groups them, each with the library's editor for its
// kind. A value set on this configuration is shown in bold with a marker;
// its reset button removes it so that the inherited value shows again,
// where the configuration inherits from another one.
//
// The descriptor is one tree shared by every configuration and the library
// points it at whichever configuration it reads (a save, an environment
// script). The sheet points it back at its own configuration whenever the
// user reaches for an editor, and before showing values, so an edit always
// lands in the configuration shown.
class PropertySheet : public QWidget {
    Q_OBJECT
public:
    enum Column { NameColumn = 0, ValueColumn = 1, ResetColumn = 2 };

    explicit PropertySheet(QWidget* parent = nullptr);
    ~PropertySheet() override;

    // Shows the current configuration of node (null: nothing).
    void setNode(QAStNode* node);
    QAStNode* node() const { return m_node; }
    // The configuration shown; null when the node has none of its current
    // name.
    QAStConfiguration* configuration() const;

    // Shows every value again (after a change made elsewhere).
    void refresh();

    // For the window and its tests: the row, editor and reset button of a
    // setting by its key (QAProperty::tag); null when not shown.
    QTreeWidgetItem* rowOf(const QString& key) const;
    QWidget* editorOf(const QString& key) const;
    QToolButton* resetButtonOf(const QString& key) const;
    // The row shows the value as set on this configuration.
    bool isMarkedOverridden(const QString& key) const;
    // Removes the value set on this configuration (the reset button).
    void resetValue(const QString& key);

    QTreeWidget* tree() const { return m_tree; }

    // The marker put before the name of a value set on the configuration.
    static QString overriddenMarker();

signals:
    // The user changed or reset a value.
    void edited();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Row {
        QAProperty* property = nullptr;
        QTreeWidgetItem* item = nullptr;
        QWidget* editor = nullptr;
        QToolButton* reset = nullptr;
    };

    void rebuild();
    void addSettings(QTreeWidgetItem* parentRow, const QAPropertyGroup* group);
    void addSetting(QTreeWidgetItem* parentRow, QAProperty* property);
    void watchEditor(QWidget* editor);
    // Points the shared descriptor at the configuration shown.
    void bind() const;
    void showState(const Row& row);
    Row* rowByKey(const QString& key);
    const Row* rowByKey(const QString& key) const;

    QPointer<QAStNode> m_node;
    QLabel* m_title;
    QTreeWidget* m_tree;
    QList<Row> m_rows;
};
