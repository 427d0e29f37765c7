#pragma once

#include "QAStNodeContainer.h"

// A library build node: its sources are built into a library.
//
// XML: "<library>" around the container block. It holds sources and links.
class SDK110_EXPORT QAStNodeLibrary : public QAStNodeContainer {
    Q_OBJECT
public:
    // A new node, inserted into parent behind after.
    QAStNodeLibrary(const QString& name, const QPixmap& icon, QAStData* parent = nullptr,
                    QAStData* after = nullptr);
    // A node read from its "library" element.
    QAStNodeLibrary(const QDomElement& e, int version, QAStData* parent = nullptr,
                    QAStData* after = nullptr);
    // A node read from the older resource format.
    QAStNodeLibrary(QARes* res, QAStData* parent = nullptr, QAStData* after = nullptr);

    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;
    unsigned int propertyKind() const override;
    QStringList allowedChildClasses() const override;
    QStringList addableChildKinds() const override;

protected:
    // For kinds that read their own element (see QAStData).
    QAStNodeLibrary(QAStData* parent, QAStData* after);

    // Reads the "library" element: the container block inside it. Returns
    // isValid().
    bool init(const QDomElement& e, int version);
};
