// The configuration element of a project file: each "configuration"
// element of the input is read against the installed settings descriptor
// and written again as a save would.
#include "FuzzSupport.h"

#include "QAStConfiguration.h"
#include "QAXML.h"

#include <QDomDocument>
#include <QTextStream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::Environment& env = Fuzz::environment();
    env.loadDescriptor();
    QDomDocument document;
    if (!QAXML::setContent(document, Fuzz::bytes(data, size)))
        return 0;
    QList<QDomElement> elements{document.documentElement()};
    const QDomNodeList found = document.elementsByTagName(QStringLiteral("configuration"));
    for (int i = 0; i < found.count() && i < 64; ++i)
        elements.append(found.at(i).toElement());
    for (const QDomElement& e : elements) {
        QAStConfiguration configuration(QStringLiteral("fuzz"), nullptr);
        if (configuration.init(e, 1)) {
            QString text;
            QTextStream out(&text);
            configuration.write(out, 0);
            configuration.perlVariables();
        }
    }
    return 0;
}
