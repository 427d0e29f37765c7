#include "QMetElement.h"

#include "QATr.h"
#include "QMetMetric.h"

#include <QCoreApplication>
#include <QVarLengthArray>

#include <algorithm>
#include <cmath>

namespace {

const QString fileType = QStringLiteral("FILE");
const QString classType = QStringLiteral("CLASS");
const QString effortKey = QStringLiteral("Effort");
const QString effortSumKey = QStringLiteral("Effort_SUM");

// The running figures of one key over a list of elements.
struct Accumulator {
    QString key;
    QString name;
    double sum = 0;
    double max = 0;
    double squares = 0;
    int count = 0;
    double mean() const { return sum / count; }
};

using Accumulators = QVarLengthArray<Accumulator, 16>;

qsizetype indexOf(const Accumulators& accumulators, const QString& key)
{
    for (qsizetype i = 0; i < accumulators.size(); ++i)
        if (accumulators[i].key == key)
            return i;
    return -1;
}

}

QMetElement::QMetElement(const QString& type, const QString& name, QMetElement* parent)
    : QObject(parent)
    , m_type(type)
    , m_name(name)
    , m_parent(parent)
{
    if (parent)
        parent->addChild(this);
}

QMetElement::~QMetElement()
{
    // The children are deleted by QObject after this body; told that their
    // parent goes, none of them touches this element's list.
    for (QMetElement* child : std::as_const(m_children))
        child->m_parent = nullptr;
    if (m_parent)
        m_parent->m_children.removeOne(this);
    qDeleteAll(m_metrics);
}

int QMetElement::lineNumber() const
{
    bool ok = false;
    const int n = m_line.toInt(&ok);
    return ok ? n : -1;
}

bool QMetElement::isFile() const
{
    return m_type == fileType;
}

bool QMetElement::isClass() const
{
    return m_type == classType;
}

bool QMetElement::isMember() const
{
    return isMemberType(m_type);
}

bool QMetElement::isMemberType(const QString& type)
{
    return type == QLatin1String("METHOD") || type == QLatin1String("CONSTRUCTOR") ||
        type == QLatin1String("DESTRUCTOR");
}

QString QMetElement::qualifiedName() const
{
    if (!isMember() || m_className.isEmpty())
        return m_name;
    return m_className + separatorFor(m_fileName) + m_name;
}

QString QMetElement::separatorFor(const QString& fileName)
{
    const qsizetype dot = fileName.lastIndexOf(QLatin1Char('.'));
    const QString extension = dot < 0 ? QString() : fileName.mid(dot + 1).toUpper();
    if (extension == QLatin1String("JAVA") || extension == QLatin1String("ADA") ||
        extension == QLatin1String("ADS") || extension == QLatin1String("ADB"))
        return QStringLiteral(".");
    return QStringLiteral("::");
}

int QMetElement::counter(const QString& key) const
{
    for (const auto& [k, count] : m_counters)
        if (k == key)
            return count;
    return 0;
}

void QMetElement::setCounter(const QString& key, int count)
{
    for (auto& [k, n] : m_counters) {
        if (k == key) {
            n = count;
            return;
        }
    }
    m_counters.append({key, count});
}

QMetElement* QMetElement::root()
{
    QMetElement* e = this;
    while (e->m_parent)
        e = e->m_parent;
    return e;
}

const QList<QMetMetric*>& QMetElement::metrics() const
{
    makeDerivedMetrics();
    return m_metrics;
}

QMetMetric* QMetElement::metric(const QString& key) const
{
    makeDerivedMetrics();
    for (QMetMetric* m : std::as_const(m_metrics))
        if (m->key() == key)
            return m;
    return nullptr;
}

float QMetElement::metricValue(const QString& key, bool* ok) const
{
    const QMetMetric* found = nullptr;
    for (const QMetMetric* m : std::as_const(m_metrics)) {
        if (m->key() == key) {
            found = m;
            break;
        }
    }
    if (!found) {
        for (const DerivedValue& d : std::as_const(m_derived)) {
            if (d.key == key) {
                if (ok)
                    *ok = true;
                return d.value;
            }
        }
    }
    if (ok)
        *ok = found != nullptr;
    return found ? found->value() : 0;
}

void QMetElement::addMetric(QMetMetric* metric)
{
    if (metric->kind() == QMetMetric::Read) {
        for (QMetMetric*& m : m_metrics) {
            if (m->kind() == QMetMetric::Read && m->key() == metric->key()) {
                delete std::exchange(m, metric);
                return;
            }
        }
    }
    m_metrics.append(metric);
}

void QMetElement::removeDerivedMetrics()
{
    m_derived.clear();
    const auto derived = std::stable_partition(m_metrics.begin(), m_metrics.end(), [](QMetMetric* m) {
        return m->kind() == QMetMetric::Read;
    });
    std::for_each(derived, m_metrics.end(), [](QMetMetric* m) { delete m; });
    m_metrics.erase(derived, m_metrics.end());
}

void QMetElement::makeDerivedMetrics() const
{
    if (m_derived.isEmpty())
        return;
    auto* self = const_cast<QMetElement*>(this);
    m_metrics.reserve(m_metrics.size() + m_derived.size());
    for (const DerivedValue& d : std::as_const(m_derived))
        m_metrics.append(new QMetMetric(self, d.key, d.name, d.value, d.kind));
    m_derived.clear();
}

void QMetElement::addDerived(const QString& key, const QString& name, float value,
                             QMetMetric::Kind kind)
{
    m_derived.append(DerivedValue{key, name, value, kind});
}

bool QMetElement::setDerivedValue(const QString& key, float value)
{
    for (DerivedValue& d : m_derived) {
        if (d.key == key) {
            d.value = value;
            return true;
        }
    }
    for (QMetMetric* m : std::as_const(m_metrics)) {
        if (m->kind() != QMetMetric::Read && m->key() == key) {
            m->setValue(value);
            return true;
        }
    }
    return false;
}

void QMetElement::addChild(QMetElement* child)
{
    m_children.append(child);
}

void QMetElement::addChild2(QMetElement* member)
{
    if (member && !m_children2.contains(member))
        m_children2.append(member);
}

bool QMetElement::addClass(QMetElement* c)
{
    if (!c || c->name().isEmpty() || m_classes.contains(c->name()))
        return false;
    m_classes.insert(c->name(), c);
    m_classList.append(c);
    const auto waiting = m_waiting.equal_range(c->name());
    for (auto it = waiting.first; it != waiting.second; ++it)
        c->addChild2(it.value());
    m_waiting.remove(c->name());
    return true;
}

QMetElement* QMetElement::findClass(const QString& name) const
{
    return m_classes.value(name);
}

bool QMetElement::addElement(QMetElement* member)
{
    if (!member || member->className().isEmpty())
        return false;
    if (QMetElement* c = findClass(member->className())) {
        c->addChild2(member);
        return true;
    }
    m_waiting.insert(member->className(), member);
    return false;
}

QList<QMetElement*> QMetElement::unattachedMembers() const
{
    return m_waiting.values();
}

// The keys and names of the derived metrics. The aggregates of a key are
// named once per update, so that elements share their texts.
struct QMetElement::DerivedTexts {
    // For a Read key and name: the four keys and names of the aggregates
    // over the children, then the four over a class's members.
    struct Aggregates {
        QString name;
        QString keys[8];
        QString names[8];
    };

    QString prefixes[4] = {QATr::analysis("Sum of "), QATr::analysis("Mean of "), QATr::analysis("Max of "),
                           QATr::analysis("Standard deviation of ")};
    QString classEnd = QATr::analysis(" for complete Class");
    QString testingTime = QATr::analysis("Testing Time");
    QString testingTimeSum = QATr::analysis("Sum of Testing Time");
    QHash<QString, Aggregates> aggregates;
    Aggregates other;

    // Keyed by the Read key; a metric whose name is not its key (made by
    // hand) gets texts of its own.
    const Aggregates& of(const QString& key, const QString& name)
    {
        auto it = aggregates.constFind(key);
        if (it != aggregates.cend() && it->name == name)
            return *it;
        static const char* const suffixes[4] = {"_SUM", "_MEAN", "_MAX", "_STD"};
        Aggregates a;
        a.name = name;
        for (int i = 0; i < 4; ++i) {
            a.keys[i] = key + QLatin1String(suffixes[i]);
            a.keys[i + 4] = a.keys[i] + QLatin1Char('2');
            a.names[i] = prefixes[i] + name;
            a.names[i + 4] = a.names[i] + classEnd;
        }
        if (it != aggregates.cend()) {
            other = a;
            return other;
        }
        return *aggregates.insert(key, a);
    }
};

void QMetElement::updateMetrics(float stroudNumber)
{
    DerivedTexts texts;
    update(texts, stroudNumber);
}

void QMetElement::update(DerivedTexts& texts, float stroudNumber)
{
    removeDerivedMetrics();
    m_counters.clear();
    aggregate(m_children, false, texts);
    if (isClass())
        aggregate(m_children2, true, texts);
    setTestingTimes(texts, stroudNumber, true);
    for (QMetElement* child : std::as_const(m_children))
        child->update(texts, stroudNumber);
}

void QMetElement::updateTestingTime(float stroudNumber)
{
    const DerivedTexts texts;
    updateTestingTime(texts, stroudNumber);
}

void QMetElement::updateTestingTime(const DerivedTexts& texts, float stroudNumber)
{
    setTestingTimes(texts, stroudNumber, false);
    for (QMetElement* child : std::as_const(m_children))
        child->updateTestingTime(texts, stroudNumber);
}

void QMetElement::setTestingTimes(const DerivedTexts& texts, float stroudNumber, bool fresh)
{
    setTestingTime(effortKey, QStringLiteral("TestingTime"), texts.testingTime, stroudNumber,
                   fresh);
    setTestingTime(effortSumKey, QStringLiteral("TestingTime_SUM"), texts.testingTimeSum,
                   stroudNumber, fresh);
}

void QMetElement::setTestingTime(const QString& sourceKey, const QString& key,
                                 const QString& name, float stroudNumber, bool fresh)
{
    bool found = false;
    const float effort = metricValue(sourceKey, &found);
    if (!found)
        return;
    const float value = effort / stroudNumber;
    if (fresh || !setDerivedValue(key, value))
        addDerived(key, name, value, QMetMetric::TestingTime);
}

// The four aggregates of every Read key among elements: the sum, the mean
// over the elements having the key, the largest value and the standard
// deviation about that mean (square root of the mean squared difference).
void QMetElement::aggregate(const QList<QMetElement*>& elements, bool classWide,
                            DerivedTexts& texts)
{
    Accumulators accumulators;
    // The accumulator of each metric read, in order, for the second pass.
    QVarLengthArray<std::pair<const QMetMetric*, qsizetype>, 256> read;
    for (const QMetElement* e : elements) {
        for (const QMetMetric* m : e->m_metrics) {
            if (m->kind() != QMetMetric::Read)
                continue;
            // Elements of a kind list their metrics in one order: the
            // accumulator after the last one used is tried first.
            qsizetype at = read.isEmpty() ? 0 : read.last().second + 1;
            if (at >= accumulators.size() || accumulators[at].key != m->key())
                at = indexOf(accumulators, m->key());
            if (at < 0) {
                accumulators.append(Accumulator{m->key(), m->name()});
                at = accumulators.size() - 1;
                accumulators[at].max = m->value();
            }
            Accumulator& a = accumulators[at];
            a.sum += m->value();
            a.max = std::max(a.max, double(m->value()));
            ++a.count;
            read.append({m, at});
        }
    }
    if (accumulators.isEmpty())
        return;
    for (const auto& [m, at] : read) {
        Accumulator& a = accumulators[at];
        const double difference = m->value() - a.mean();
        a.squares += difference * difference;
    }

    const int first = classWide ? 4 : 0;
    const QMetMetric::Kind kind = classWide ? QMetMetric::ClassAggregate : QMetMetric::Aggregate;
    m_derived.reserve(m_derived.size() + 4 * accumulators.size() + 2);
    for (const Accumulator& a : std::as_const(accumulators)) {
        const DerivedTexts::Aggregates& t = texts.of(a.key, a.name);
        const double values[4] = {a.sum, a.mean(), a.max, std::sqrt(a.squares / a.count)};
        m_counters.append({t.keys[first + 1], a.count});
        for (int i = 0; i < 4; ++i)
            addDerived(t.keys[first + i], t.names[first + i], float(values[i]), kind);
    }
}
