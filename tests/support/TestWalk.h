#pragma once

#include "QAStNode.h"

#include <QSignalSpy>

// Runs a command of the node (build, execute, clean...) and waits for the
// end of its walk; true when it ended well.
inline bool walk(QAStNode* node, void (QAStNode::*command)())
{
    QSignalSpy finished(node, &QAStNode::buildExecuteFinished);
    (node->*command)();
    if (finished.isEmpty() && !finished.wait(180000))
        return false;
    return finished.size() == 1 && node->walkSucceeded();
}
