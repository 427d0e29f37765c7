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
    // A new node, inserted into parent behind after.
    QAStNodeSource(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
                   QAStData* after = nullptr);
    // A node read from its "source" element.
    QAStNodeSource(const QDomElement& e, int version, QAStData* parent = nullptr,
                   QAStData* after = nullptr);
    // A node read from the older resource format.
    QAStNodeSource(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);

    bool integratedSource() const { return m_integrated; }
    void setIntegratedSource(bool integrated);

    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;
    unsigned int propertyKind() const override;
    // The object file the source compiles to, relative to the node's
    // directory: <intdir>/<file name without its last extension><objectExt>.
    QString objectFile() const;
    // Before a node that links (application, library, unit testing) walks
    // its children: its "OBJ" output files become the object files of its
    // selected sources, those in its groups included.
    static void prepareLinkStep(QAStNode* linker);
    // The kind's driver (docs/formats/driver-scripts.md).
    QString driverKind() const override;
    QStringList allowedChildClasses() const override;
    QStringList addableChildKinds() const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStNodeSource(QAStData* parent, QAStData* after);

    // Reads the "source" element. Returns isValid().
    bool init(const QDomElement& e, int version);

private:
    bool m_integrated = false;
};
