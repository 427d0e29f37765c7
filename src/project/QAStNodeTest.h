#pragma once

#include "QAStNodeContainer.h"

class QASTSplitSurvey;

// Base of the test nodes and of the application node: a container whose
// block is "test" rather than "group".
//
// XML, the test block: "<test>", the node block, "<test_child>", the
// children, "</test_child>", "</test>". Each test kind opens its own element
// around it. The block alone is not an item of the project file, so "test"
// has no row in the factory.
//
// By default it holds test scripts and sources.
//
// The runtime split. A kind whose test program runs through the Execute
// driver (splitsRuntimeOutput) splits the program's runtime output into
// the result files the viewers read (QASTSplitSurvey,
// docs/formats/runtime-output.md). When an execution with the execute
// stage starts the driver, the node removes the runtime output of the last
// run, empties the seven result files (made when missing) and makes the
// split. With "atc_onthefly" or "att_on_fly" set, the split follows the
// output every RuntimeSplitDelay ms while the test runs; otherwise it
// reads the whole output once at the end. When the driver ends
// (testerNodeTerminated), the split's final pass runs and the split is
// deleted; stop() stops it at once, and a walk that ends without the
// driver's end does the final pass as it ends.
class SDK110_EXPORT QAStNodeTest : public QAStNodeContainer {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeContainer::QAStNodeContainer;
    // A node read from a test block ("test" element).
    QAStNodeTest(const QDomElement& e, int version, QAStData* parent = nullptr,
                 QAStData* after = nullptr);
    ~QAStNodeTest() override;

    // The test block.
    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then, for a test that splits its
    // runtime output, @RESULT_FILES: the runtime output and the result
    // files of its runs, which a clean removes.
    void generateEnv(QTextStream& out) override;

    // The file the runtime of this node's test program writes its combined
    // result stream into, for the current configuration: the environment
    // script's $ATL_OUT_FILE, <intdir>/<test name>.spt, made absolute
    // against the node's directory (where the drivers run). Empty without
    // a configuration.
    QString runtimeOutputFile() const;
    // The seven files the split of runtimeOutputFile() writes, in the
    // split's index order (QASTSplitSurvey::Output): results, memory
    // profile, performance profile, coverage, trace, end-of-test and
    // rejected lines. The profiles, coverage and trace are the environment
    // script's $ATP_TPF_NAME, $ATQ_TQF_NAME, $ATC_TIO_NAME and
    // $ATT_TDF_NAME (<outdir>/<test name>.tpf ...); the results are
    // <outdir>/<test name>.rio, the end-of-test and rejected lines
    // <intdir>/<test name>.end and .rej. Absolute; empty without a
    // configuration.
    QStringList runtimeResultFiles() const;

    // The split of the running execution's runtime output; null between
    // runs and for kinds that split nothing.
    QASTSplitSurvey* runtimeSplit() const { return m_split; }
    // Stops the split's survey, then the running script.
    void stop() override;

    // The tick of an on-the-fly split, in ms.
    static constexpr int RuntimeSplitDelay = 500;

protected:
    // The kind runs its test program through the Execute driver, whose
    // runtime output is split; false in the base.
    virtual bool splitsRuntimeOutput() const;
    // Starts the runtime split, then runs the kind's driver.
    void executeAfterChildren(bool debug) override;
    // Ends a split that the driver's end did not end (an aborted walk).
    void executeFinishEvent() override;

protected slots:
    // The driver of an execution ended: the split's final pass, then the
    // split is deleted.
    void testerNodeTerminated();

    // Reads the test block: the node block (required), then the children of
    // "test_child". Returns isValid().
    bool init(const QDomElement& testElement, int version);

private:
    void startRuntimeSplit();
    // Empties the result files of the run, making them when missing; a
    // file that cannot be written is told on the output console.
    void emptyResultFiles(const QStringList& files);
    void endRuntimeSplit();

    QASTSplitSurvey* m_split = nullptr; // owned
};
