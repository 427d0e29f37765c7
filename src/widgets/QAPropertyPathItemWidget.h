#pragma once

#include "QAPropertyTextWidget.h"

class QAPropertyPathItem;

// Editor of one path: a line edit and a "..." browse button that asks
// QAPropertyFileChooser with the property's filters and mode.
class SDK110WIDGETS_EXPORT QAPropertyPathItemWidget : public QAPropertyTextWidget {
    Q_OBJECT
public:
    QAPropertyPathItemWidget(QAPropertyPathItem* property, QWidget* parent = nullptr);
    ~QAPropertyPathItemWidget() override;

protected:
    // Commits the first chosen path; nothing when the user cancelled.
    void buttonClicked() override;

private:
    QAPropertyPathItem* m_pathItem;
};
