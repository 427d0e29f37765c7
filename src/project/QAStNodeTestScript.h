#pragma once

#include "QAStNodeFileRef.h"

// A test script of a test node: the file, the test cases and families it
// defines, the ones selected for the next run, and the virtual-tester
// instance to run (allInstances() for all of them).
//
// XML, the test_script block: "<test_script>", the nodefile_ref block,
// "cas_all" (one "cas" per test case), "fam_all" (one "fam" per family),
// "cas_selection" and "fam_selection" (the selected ones), "instance",
// "</test_script>". The script kinds open their own element around it; on
// its own it is the object-testing script.
class SDK110_EXPORT QAStNodeTestScript : public QAStNodeFileRef {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeFileRef::QAStNodeFileRef;
    // A node read from its "test_script" element.
    QAStNodeTestScript(const QDomElement& e, int version, QAStData* parent = nullptr,
                       QAStData* after = nullptr);
    ~QAStNodeTestScript() override;

    // The instance selection that stands for every instance: "<all>".
    static QString allInstances();

    QStringList testCases() const { return m_testCases; }
    void setTestCases(const QStringList& testCases);
    QStringList families() const { return m_families; }
    void setFamilies(const QStringList& families);
    QStringList selectedTestCases() const { return m_selectedTestCases; }
    void setSelectedTestCases(const QStringList& testCases);
    QStringList selectedFamilies() const { return m_selectedFamilies; }
    void setSelectedFamilies(const QStringList& families);
    // The name of the virtual-tester instance to run, or allInstances()
    // (the default).
    QString instance() const { return m_instance; }
    void setInstance(const QString& instance);

    // The test_script block.
    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;

protected:
    // Reads the test_script block: the nodefile_ref block (required), then
    // the script's fields. Returns isValid().
    bool init(const QDomElement& testScriptElement, int version);

private:
    QStringList m_testCases;
    QStringList m_families;
    QStringList m_selectedTestCases;
    QStringList m_selectedFamilies;
    QString m_instance = allInstances();
};
