#pragma once

#include "QAPropertyBinding.h"

// An integer setting edited in a spin box with limits, step and suffix.
class SDK110_EXPORT QAPropertyInt : public QAProperty {
public:
    explicit QAPropertyInt(const QString& name = QString(), int min = 0, int max = 99, int step = 1);
    ~QAPropertyInt() override;

    // The number followed by the suffix; empty without a value.
    QString displayValue() const override;
    QMetaType::Type type() const override;
    QWidget* createEditor(QWidget* parent) override;

    int minimum() const { return m_min; }
    void setMinimum(int min) { m_min = min; }
    int maximum() const { return m_max; }
    void setMaximum(int max) { m_max = max; }
    int step() const { return m_step; }
    void setStep(int step) { m_step = step; }
    const QString& suffix() const { return m_suffix; }
    void setSuffix(const QString& suffix) { m_suffix = suffix; }

private:
    int m_min;
    int m_max;
    int m_step;
    QString m_suffix;
};

class SDK110_EXPORT QAPropertyAttrInt : public QAPropertyAttrBinding<QAPropertyInt, int> {
public:
    using QAPropertyAttrBinding::QAPropertyAttrBinding;
    ~QAPropertyAttrInt() override;
};

class SDK110_EXPORT QAPropertyMapInt : public QAPropertyMapBinding<QAPropertyInt> {
public:
    using QAPropertyMapBinding::QAPropertyMapBinding;
    ~QAPropertyMapInt() override;
};
