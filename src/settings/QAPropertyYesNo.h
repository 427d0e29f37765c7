#pragma once

#include "QAPropertyBool.h"

// A Boolean setting shown as "Yes" or "No".
class SDK110_EXPORT QAPropertyYesNo : public QAPropertyBool {
public:
    explicit QAPropertyYesNo(const QString& name = QString());
    ~QAPropertyYesNo() override;

    // "Yes" or "No", translated in the context "Properties".
    QString text(bool b) const override;
};

class SDK110_EXPORT QAPropertyAttrYesNo : public QAPropertyAttrBinding<QAPropertyYesNo, bool> {
public:
    using QAPropertyAttrBinding::QAPropertyAttrBinding;
    ~QAPropertyAttrYesNo() override;
};

class SDK110_EXPORT QAPropertyMapYesNo : public QAPropertyMapBinding<QAPropertyYesNo> {
public:
    using QAPropertyMapBinding::QAPropertyMapBinding;
    ~QAPropertyMapYesNo() override;
};
