#pragma once

#include "QAStNodeContainer.h"

// A library build node: its sources are built into a library.
//
// XML: "<library>" around the container block. It holds sources and links.
class SDK110_EXPORT QAStNodeLibrary : public QAStNodeContainer {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeContainer::QAStNodeContainer;
    // A node read from its "library" element.
    QAStNodeLibrary(const QDomElement& e, int version, QAStData* parent = nullptr,
                    QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;
    // The library the node makes, relative to the project directory, and
    // absolute: the setting testProgram, or for "<default>" the node's name
    // in the intermediate directory with the extension of its generation
    // format (DLL: libraryDynamicExt, EXE: binaryExt, else
    // libraryStaticExt). Empty without a configuration.
    QString libraryFile() const;
    QString libraryFileAbsolute() const;
    // The kind's driver (docs/formats/driver-scripts.md).
    // Compiles its sources and links them.
    bool linksObjects() const override;
    // libraryFile(), from the configuration: a node that links the library
    // finds it whether it was built in this run or not.
    QStringList libraryOutputs() const override;

protected:
    // Prepares the link step (QAStNodeSource::prepareLinkStep) and names
    // the library as the node's "LIB" output.
    void buildFirstChild() override;

    // Reads the "library" element: the container block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
