#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QString>
#include <QStringList>

class QAProperty;
class QAStNode;

// Interface of a plug-in that gives node kinds settings of their own, which
// reach the driver scripts as Perl variables of the node's environment
// script (QAStPerlGen::generatePerlVariables).
//
// A feature's settings apply to the node kinds whose kind id (QAStNode::
// kindId(), the class name, e.g. "QAStNodeApplication") it lists.
class SDK110_EXPORT QAINodeSettingsPlugin {
public:
    static const char* interfaceId() { return "sdk110.QAINodeSettingsPlugin/1"; }

    virtual ~QAINodeSettingsPlugin() = default;

    // The kind ids of the node kinds that feature adds settings to.
    virtual QStringList settingsNodeKinds(const QString& feature) const = 0;
    // The feature's settings holding node's values, each with its Perl
    // variable name (QAProperty::perlVarName()); owned by the plug-in and
    // valid until the next call.
    virtual QList<QAProperty*> nodeProperties(const QString& feature, QAStNode* node) = 0;
};
