#pragma once

#include "QAPropertyStore.h"

#include <QList>
#include <QPointer>
#include <QString>

#include <utility>

class QAProperty;
class QAPropertyMapGroup;
class QARes;
class QAStNode;
class QAStTargetPackage;
class QDomElement;
class QTextStream;
class StudioInterface;

// One named build configuration of a node: a property store whose values
// the node sets for itself, inheriting every other key from the
// configuration of the same name up the tree (the owning node's
// inheritConfiguration decides which: the parent node's, up to the
// project's, then the project's initial configuration).
//
// Keys with a fixed meaning:
//   "name"            the configuration's name, by which nodes find it
//   "targetPath"      directory of the target deployment package in use
//   "sourceLanguage"  "C", "CPP", "ADA", "ADA83", "ADA95" or "JAVA"
//
// Every other setting is described by the settings descriptor, one tree
// shared by all configurations (initialize). Saving and reading go through
// it: described keys are read into the store by the type the descriptor
// gives, and written when set on this configuration (inherited values
// never). A value read whose key the descriptor does not describe (no
// descriptor, or one older or newer than the file) is kept as it was read
// and written back after the described ones, so a save never drops what
// was read. docs/formats/configuration.md gives the element and the
// defaults.
class SDK110_EXPORT QAStConfiguration : public QAPropertyStore {
    Q_OBJECT
public:
    // A configuration for node (not owned; null for none). It is not added
    // to the node: QAStNode::addConfiguration does that.
    QAStConfiguration(const QString& name, QAStNode* node);
    // A configuration belongs to one node: make a new one and init() it
    // from another instead.
    QAStConfiguration(const QAStConfiguration&) = delete;
    // Copies the values of other; this configuration keeps its own name.
    QAStConfiguration& operator=(const QAStConfiguration& other);
    // Unbinds the shared descriptor when it shows this configuration.
    ~QAStConfiguration() override;

    // The owning node's inheritConfiguration(this); null without a node.
    QAPropertyStore* inheritOf() const override;
    // "<configuration>", the name and every value set on this configuration
    // that the descriptor describes, one element a line at indent + 1,
    // "</configuration>". Binds the shared descriptor to this configuration.
    virtual void write(QTextStream& s, int indent) const;
    // The descriptor's leaf properties that carry a Perl variable name, in
    // descriptor order, bound to this configuration; owned by the
    // descriptor. Empty before initialize.
    virtual QList<QAProperty*> perlVariables() const;

    QString name() const;
    void setName(const QString& name);
    // The owning node; null when it has none or it was deleted.
    QAStNode* node() const;

    // The directory of "targetPath" with its macros expanded in the
    // node's context (${ZELTAHOME}/targets/... for an installed package),
    // taken relative to the project directory when "targetPathAsRelative"
    // is set; empty when no path is set.
    QString targetPackagePath() const;
    // The package of targetPackagePath(): an installed one, or one read
    // from that directory (QAStTargetPackageList::packageAt); null when no
    // path is set or no package is found there.
    QAStTargetPackage* targetPackage() const;
    // The language bit of "sourceLanguage" (upper-cased): "C" 1, "CPP" 2,
    // "ADA", "ADA83" and "ADA95" 4, "JAVA" 8; any other text, or none, 1.
    int languageType() const;

    // Copies the values of c, keeping this configuration's name.
    void init(const QAStConfiguration& c);
    // Reads a "configuration" element: its "name", then the described
    // values present (absent ones keep inheriting). False, with a line in
    // the load report, when the element has no "name".
    bool init(const QDomElement& e, int version);
    // Reads the older resource form: a group whose "name" string is the
    // name, the described values by their keys.
    void init(QARes* res);
    // Sets the values a package gives (docs/formats/configuration.md).
    void init(const QAStTargetPackage& package);
    // Removes every value but the name, then sets the package's values.
    void reset(const QAStTargetPackage& package);
    // Sets the built-in defaults: the initial value of every described
    // setting that has one, and executionFlag with every stage.
    void init();

    // Every stage bit of a run (c 0x01, p 0x02, t 0x04, l 0x08, e 0x10,
    // r 0x20), without the debug bit 0x100: the default "executionFlag".
    static constexpr int allStages = 0x3F;

    // Values read whose key the descriptor does not describe: each key with
    // its text as the file held it (encoded), in file order.
    using KeptValues = QList<std::pair<QString, QString>>;
    const KeptValues& keptValues() const { return m_keptValues; }

    // Loads the shared descriptor from <installDir>/korvilprojectsettings.
    // properties (createPropertyDescriptor), its messages going to the
    // message console. Loading is tried once: the first call says whether
    // the descriptor was loaded, every later call returns true at once
    // (propertyDescriptor() tells whether there is one). host and
    // resources are those of the library's start-up (QAStData::initialize),
    // which already keeps them.
    static bool initialize(StudioInterface* host, QARes* resources);
    // Releases the shared descriptor; the next initialize loads it again.
    static void terminate(StudioInterface* host, QARes* resources);
    // The shared descriptor's root; null before initialize.
    static QAPropertyMapGroup* propertyDescriptor();
    // The descriptor file of the installation.
    static QString propertyDescriptorFile();

protected:
    // Loads a descriptor tree from propertyDescriptorFile(); the caller
    // owns it. Null when it cannot be loaded.
    static QAPropertyMapGroup* createPropertyDescriptor();

private:
    friend class QAStNode;

    // The shared descriptor, pointed at this configuration; null before
    // initialize.
    QAPropertyMapGroup* boundDescriptor() const;
    // Keeps the values of e whose key the descriptor does not describe.
    void keepUndescribedValues(const QDomElement& e);

    QPointer<QAStNode> m_node;
    KeptValues m_keptValues;
    // name() as of the store's revision m_nameRevision.
    mutable QString m_name;
    mutable quint64 m_nameRevision = 0;
};
