#pragma once

#include "QAStNodeFileRef.h"

// A source file of a build or test node. An integrated source is compiled
// with the tested code as it is, not as a unit under test.
//
// XML: "<source>", the nodefile_ref block, "integrated", "source_child"
// with the children, "</source>". It holds user nodes: commands run
// when the source is built (a generator, for instance).
class SDK110_EXPORT QAStNodeSource : public QAStNodeFileRef {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeFileRef::QAStNodeFileRef;
    // A node read from its "source" element.
    QAStNodeSource(const QDomElement& e, int version, QAStData* parent = nullptr,
                   QAStData* after = nullptr);

    bool integratedSource() const { return m_integrated; }
    void setIntegratedSource(bool integrated);

    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;
    // The node that links this source: the nearest node above it, past its
    // groups, when that node links objects (QAStNode::linksObjects); null
    // for a source of no such node.
    QAStNode* linker() const;
    // The object file the source compiles to, in the object directory of
    // its linker (its own without one): QAStNode::objectFileFor.
    QString objectFile() const;
    // The selected sources a node that links compiles: its source
    // children and those of its groups, in tree order, each file once.
    static QList<QAStNodeSource*> compiledBy(const QAStNode* linker);
    // Before a node that links (application, library, unit testing) walks
    // its children: its "OBJ" output files become the object files of the
    // sources it compiles.
    static void prepareLinkStep(QAStNode* linker);
    // The lines of a node that links: $OBJECT_DIR, its object directory,
    // and @SOURCE_ENVIRONMENTS, the environment scripts of the sources it
    // compiles (written by writeSourceEnvironments before its build).
    static void writeLinkLines(QTextStream& out, QAStNode* linker);
    // Writes the environment script of each source linker compiles; false,
    // with the reason on the output console, when one cannot be written.
    static bool writeSourceEnvironments(QAStNode* linker);

protected:
    // A source whose linker builds or cleans now has nothing of its own to
    // run: the linker's driver run compiles it (or removes its objects).
    // Built or cleaned alone, it runs its own driver.
    void buildAfterChildren() override;

    // Reads the "source" element. Returns isValid().
    bool init(const QDomElement& e, int version);

private:
    bool m_integrated = false;
};
