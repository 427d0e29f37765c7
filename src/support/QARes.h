#pragma once

#include "sdk110_export.h"

#include <QList>
#include <QString>
#include <QStringList>

class QAResGroup;
class QAResString;
class QAResInt;
class QAResBoolean;
class QAResList;

// Receives the errors found while reading a resource file. A reader
// installs its own with QARes::setErrorHandler and restores the previous
// one when it is done.
class SDK110_EXPORT QAResErrorHandler {
public:
    virtual ~QAResErrorHandler();
    virtual void error(const QString& file, int line, const QString& message) = 0;
};

// The resource store: a tree of named, typed values read from a resource
// file (settings descriptor, target-package ini files, older project and
// workspace files). The grammar is described in docs/formats/resource-file.md.
//
// A read yields one root group (named after nothing, line 0) whose children
// are the file's top-level entries in file order. Every resource owns its
// children; deleting the root frees the tree.
class SDK110_EXPORT QARes {
public:
    enum Type { Group, String, Int, Boolean, List };

    virtual ~QARes();

    // Reads a resource file. Returns the root group, or null when the file
    // cannot be opened. Syntax errors are reported to the installed error
    // handler (when reportErrors is true), counted in errorCount(), and
    // reading goes on with the next entry, so the tree holds what could be
    // read.
    static QARes* read(const char* fileName, bool reportErrors = true);
    static QARes* read(const QString& fileName, bool reportErrors = true);
    // Reads resource text held in memory; fileName is used in messages.
    static QARes* readText(const QString& text, const QString& fileName, bool reportErrors = true);
    // Errors counted by the last read.
    static int errorCount();

    // Installs a handler and returns the one it replaces. Null restores the
    // default, which writes "file:line: message" to the Qt warning channel.
    static QAResErrorHandler* setErrorHandler(QAResErrorHandler* handler);
    static QAResErrorHandler* errorHandler();

    Type type() const { return m_type; }
    const QString& name() const { return m_name; }
    int line() const { return m_line; }
    const QString& fileName() const { return m_file; }
    QARes* parent() const { return m_parent; }

    bool isGroup() const { return m_type == Group; }
    bool isString() const { return m_type == String; }
    bool isInt() const { return m_type == Int; }
    bool isBoolean() const { return m_type == Boolean; }
    bool isList() const { return m_type == List; }

    // Typed views; null when the resource is of another type.
    QAResGroup* toResGroup();
    QAResString* toResString();
    QAResInt* toResInt();
    QAResBoolean* toResBoolean();
    QAResList* toResList();
    const QAResGroup* toResGroup() const;
    const QAResString* toResString() const;
    const QAResInt* toResInt() const;
    const QAResBoolean* toResBoolean() const;
    const QAResList* toResList() const;

    // True for a list whose every item has the given type (an empty list
    // is a list of anything).
    bool isListOf(Type type) const;

    // Finds a resource by a path of names joined by the separator, walking
    // groups from this one ("a.b.c"); the first entry of each name is taken.
    // Null when a step is missing or is not a group.
    QARes* search(const QString& path, QChar separator = QLatin1Char('.')) const;

    // Looks up a direct child of a group by name (the first of that name).
    QARes* find(const QString& key) const;

    // Text of a scalar value as it would be written ("true"/"false" for a
    // Boolean, decimal for an integer); empty for groups and lists.
    QString toText() const;

protected:
    QARes(Type type, const QString& name, int line, const QString& file);

private:
    friend class QAResGroup;
    friend class QAResList;
    Type m_type;
    QString m_name;
    int m_line;
    QString m_file;
    QARes* m_parent = nullptr;
};

// A named group: an ordered list of entries; several may share one name.
class SDK110_EXPORT QAResGroup : public QARes {
public:
    QAResGroup(const QString& name, int line = 0, const QString& file = QString());
    ~QAResGroup() override;

    const QList<QARes*>& children() const { return m_children; }
    // Every direct child of that name, in file order.
    QList<QARes*> findAll(const QString& key) const;
    // Takes ownership.
    void append(QARes* child);
    // Makes room for that many children at once.
    void reserve(qsizetype size);

private:
    QList<QARes*> m_children;
};

class SDK110_EXPORT QAResString : public QARes {
public:
    QAResString(const QString& name, const QString& value, int line = 0, const QString& file = QString());
    const QString& value() const { return m_value; }

private:
    QString m_value;
};

class SDK110_EXPORT QAResInt : public QARes {
public:
    QAResInt(const QString& name, qint64 value, int line = 0, const QString& file = QString());
    qint64 value() const { return m_value; }

private:
    qint64 m_value;
};

class SDK110_EXPORT QAResBoolean : public QARes {
public:
    QAResBoolean(const QString& name, bool value, int line = 0, const QString& file = QString());
    bool value() const { return m_value; }

private:
    bool m_value;
};

// An ordered list of unnamed values (strings, integers, Booleans, groups or
// lists); its items carry an empty name.
class SDK110_EXPORT QAResList : public QARes {
public:
    QAResList(const QString& name, int line = 0, const QString& file = QString());
    ~QAResList() override;

    const QList<QARes*>& items() const { return m_items; }
    // The items' texts (toText of each scalar item).
    QStringList strings() const;
    // Takes ownership.
    void append(QARes* item);
    // Makes room for that many items at once.
    void reserve(qsizetype size);

private:
    QList<QARes*> m_items;
};
