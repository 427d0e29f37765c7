#pragma once

#include "QAStNode.h"

#include <QDateTime>
#include <QFile>
#include <QPointer>
#include <QTextStream>

#include <memory>

// The private members of QAStNode, shared by its source files.
struct QAStNode::Private {
    Command m_command = Command::Build;
    bool m_walking = false;
    bool m_walkSucceeded = false;
    bool m_debugRun = false;
    Then m_then = Then::Nothing;
    QString m_savedDirectory;
    QList<QPointer<QAStNode>> m_walkChildren;
    qsizetype m_walkIndex = -1;
    QPointer<QAStNode> m_walkChild;
    std::unique_ptr<QFile> m_environmentFile;
    std::unique_ptr<QTextStream> m_environmentStream;
    QDateTime m_lastBuild;
    QString m_lastBuildDigest;
    bool m_buildRecorded = false;
    QList<QAStConfiguration*> m_configurations;
    QString m_currentConfigurationName;
    State m_state = Selected;
    bool m_background = false;
    QList<OutputFile> m_outputFiles;
    QString m_perlScriptBeforeChild;
    QString m_perlScriptAfterChild;
};
