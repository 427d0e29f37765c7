#include "QAStData.h"
#include "QAStDataUndoAction.h"
#include "QAStDataUndoActionManager.h"
#include "QAStProject.h"
#include "QAStSubProject.h"
#include "RecordingStudio.h"
#include "TestItems.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPointer>
#include <QtTest>

#include <memory>

namespace {

// Children by name, nested ones in brackets: "a b[b1 b2] c".
QString shape(const QAStData* item)
{
    QStringList parts;
    for (QAStData* c = item->child(); c; c = c->next())
        parts << c->name() + (c->child() ? "[" + shape(c) + "]" : QString());
    return parts.join(QLatin1Char(' '));
}

// Runs the deletions that del() and undo leave for later.
void flushDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

}

class TestUndo : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void undoOfARemovalRebuildsItInPlace();
    void redoAndUndoAgain();
    void additionsAndMoves();
    void pasteAndCutRecord();
    void newEditEmptiesRedo();
    void emptyStackChangesNothing();
    void goneParentIsSkipped();
    void adjacentRemovalsInOneEntry();
    void childComesBackIntoItsRebuiltParent();
    void loadingRecordsNothing();
    void sortedParentTakesItBackInPlace();
    void quidsOfAnotherProjectFileAreNotSearched();

private:
    // root: a, b[b1 b2], c
    void buildTree();

    std::unique_ptr<RecordingStudio> m_studio;
    std::unique_ptr<TestItem> m_root;
    QAStData* m_b = nullptr;
};

void TestUndo::init()
{
    m_studio = std::make_unique<RecordingStudio>();
    QAStData::undoManager()->clear();
    buildTree();
}

void TestUndo::cleanup()
{
    m_root.reset();
    flushDeletes();
    QAStData::undoManager()->clear();
}

void TestUndo::buildTree()
{
    m_root = std::make_unique<TestItem>(QStringLiteral("root"));
    auto* a = new TestItem(QStringLiteral("a"), m_root.get(), nullptr);
    m_b = new TestItem(QStringLiteral("b"), m_root.get(), a);
    auto* b1 = new TestItem(QStringLiteral("b1"), m_b, nullptr);
    new TestItem(QStringLiteral("b2"), m_b, b1);
    new TestItem(QStringLiteral("c"), m_root.get(), m_b);
}

void TestUndo::undoOfARemovalRebuildsItInPlace()
{
    const quint32 quid = m_b->quid();
    const quint32 childQuid = m_b->child()->quid();
    const QString text = m_b->toString();
    QVERIFY(m_b->del());
    flushDeletes();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a c"));
    QVERIFY(QAStData::isUndoAvailable());

    QAStData::undo();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2] c"));
    QAStData* rebuilt = m_root->child()->next();
    QCOMPARE(rebuilt->quid(), quid);
    QCOMPARE(rebuilt->child()->quid(), childQuid);
    QCOMPARE(rebuilt->toString(), text);
    QVERIFY(!QAStData::isUndoAvailable());
    QVERIFY(QAStData::isRedoAvailable());
}

void TestUndo::redoAndUndoAgain()
{
    m_b->del();
    QAStData::undo();
    QAStData::redo();
    flushDeletes();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a c"));
    QVERIFY(QAStData::isUndoAvailable());
    QVERIFY(!QAStData::isRedoAvailable());

    QAStData::undo();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2] c"));
}

void TestUndo::additionsAndMoves()
{
    auto* d = new TestItem(QStringLiteral("d"));
    QVERIFY(m_root->userAdd(d, m_root->child()));
    QCOMPARE(shape(m_root.get()), QStringLiteral("a d b[b1 b2] c"));

    // A move is one entry: a removal at the old place, an addition at the new.
    QAStData* c = m_root->last();
    QVERIFY(QAStData::userMove(m_b->child(), c, nullptr));
    QCOMPARE(shape(m_root.get()), QStringLiteral("a d b[b2] c[b1]"));
    QVERIFY(!QAStData::userMove(m_root.get(), m_b, nullptr));

    QAStData::undo();
    flushDeletes();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a d b[b1 b2] c"));
    QAStData::undo();
    flushDeletes();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2] c"));

    QAStData::redo();
    QAStData::redo();
    flushDeletes();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a d b[b2] c[b1]"));
}

void TestUndo::pasteAndCutRecord()
{
    m_root->child()->copy();
    QAStData* pasted = m_b->paste();
    QVERIFY(pasted);
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2 a] c"));
    m_root->last()->cut();
    flushDeletes();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2 a]"));
    QCOMPARE(QGuiApplication::clipboard()->text().contains(QStringLiteral("<name>c</name>")), true);

    QAStData::undo();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2 a] c"));
    QAStData::undo();
    flushDeletes();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2] c"));
}

void TestUndo::newEditEmptiesRedo()
{
    m_b->del();
    QAStData::undo();
    QVERIFY(QAStData::isRedoAvailable());
    m_root->child()->del();
    QVERIFY(!QAStData::isRedoAvailable());
    QAStData::redo();
    flushDeletes();
    QCOMPARE(shape(m_root.get()), QStringLiteral("b[b1 b2] c"));
}

void TestUndo::emptyStackChangesNothing()
{
    const QString before = m_root->toString();
    QAStData::undo();
    QAStData::redo();
    QCOMPARE(m_root->toString(), before);
    QVERIFY(!QAStData::isUndoAvailable());
    QVERIFY(!QAStData::isRedoAvailable());

    QAStData::undoManager()->add(QList<QAStDataUndoAction*>{nullptr});
    QVERIFY(!QAStData::isUndoAvailable());
}

void TestUndo::goneParentIsSkipped()
{
    m_b->child()->del();
    auto* added = new TestItem(QStringLiteral("added"));
    m_b->userAdd(added, nullptr);
    QPointer<QAStData> b = m_b;
    delete m_b;
    flushDeletes();
    QVERIFY(!b);
    QVERIFY(!QAStData::isUndoAvailable());

    QAStData::undo();
    QAStData::undo();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a c"));
    QVERIFY(!QAStData::isRedoAvailable());

    // The whole tree gone: the project closed.
    m_root->child()->del();
    m_root.reset();
    flushDeletes();
    QAStData::undo();
    QVERIFY(!QAStData::isRedoAvailable());
}

void TestUndo::adjacentRemovalsInOneEntry()
{
    // As a view deletes a selection: every removal taken before any item
    // leaves.
    QAStData* a = m_root->child();
    QList<QAStDataUndoAction*> removals{
        new QAStDataUndoAction(QAStDataUndoAction::Removed, a),
        new QAStDataUndoAction(QAStDataUndoAction::Removed, m_b)};
    for (QAStData* item : {a, m_b}) {
        item->remove();
        item->deleteLater();
    }
    QAStData::undoManager()->add(removals);
    flushDeletes();
    QCOMPARE(shape(m_root.get()), QStringLiteral("c"));

    for (int round = 0; round < 2; ++round) {
        QAStData::undo();
        QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2] c"));
        QAStData::redo();
        flushDeletes();
        QCOMPARE(shape(m_root.get()), QStringLiteral("c"));
    }
}

void TestUndo::childComesBackIntoItsRebuiltParent()
{
    m_b->child()->del();
    m_b->del();
    flushDeletes();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a c"));

    QAStData::undo();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b2] c"));
    QAStData::undo();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2] c"));
}

void TestUndo::loadingRecordsNothing()
{
    const QString text = m_root->toString();
    std::unique_ptr<QAStData> loaded(QAStData::stringContentToData(text));
    QVERIFY(loaded);
    QCOMPARE(shape(loaded.get()), shape(m_root.get()));
    m_root->deleteChildren();
    QVERIFY(!QAStData::isUndoAvailable());
}

// The rebuilt item is attached before its name is read: it must not go to
// the front of its sorted parent.
void TestUndo::sortedParentTakesItBackInPlace()
{
    m_root->setAlphabeticallySorted(true);
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2] c"));
    QVERIFY(m_b->del());
    flushDeletes();
    QAStData::undo();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2] c"));
    QAStData::redo();
    flushDeletes();
    QAStData::undo();
    QCOMPARE(shape(m_root.get()), QStringLiteral("a b[b1 b2] c"));
}

// Quids are unique within one project file: a sub-project made apart from
// its including project uses the same numbers, and undo must not put an
// item of the project into the sub-project's file.
void TestUndo::quidsOfAnotherProjectFileAreNotSearched()
{
    QAStProject project(QStringLiteral("p"), QPixmap());
    auto* sub = new QAStSubProject(QStringLiteral("sub/sub.rtp"), &project, nullptr);
    auto* inSub = new TestItem(QStringLiteral("in the sub-project"), sub, nullptr);
    auto* group = new TestItem(QStringLiteral("group"), &project, sub);
    inSub->setQuid(group->quid());
    QAStData* item = new TestItem(QStringLiteral("item"), group, nullptr);

    QVERIFY(item->del());
    QVERIFY(group->del());
    flushDeletes();
    QAStData::undo();
    QAStData::undo();
    QCOMPARE(shape(&project), QStringLiteral("sub[in the sub-project] group[item]"));
}

QTEST_MAIN(TestUndo)
#include "tst_undo.moc"
