#pragma once

#include "QAStNodeTest.h"

// A system-testing node: system-testing scripts whose virtual testers are
// deployed on machines as instances that meet at rendezvous.
//
// XML: "<system_testing>", the test block, then
//   "deployment_table": one empty "deployment_data" element per deployment,
//       attributes isActivated, vtNodeName, instance, delay, number, occId,
//       hostIp, portAgent, startRoutine;
//   "rendezvous_list" (attribute autogenerate): one empty "rendezvous"
//       element per rendezvous, attributes name, number;
//   "machine_list": one empty "machine" element per machine, attribute name;
// then "</system_testing>". Attribute values are encoded as element texts
// are, with '"' written "&quot;". It holds system-testing scripts and
// sources.
class SDK110_EXPORT QAStNodeSystemTesting : public QAStNodeTest {
    Q_OBJECT
public:
    // A new node (name, icon), one read from the older resource format
    // (res), and for kinds that read their own element (parent, after).
    using QAStNodeTest::QAStNodeTest;
    // One deployment of a virtual tester: which tester (by node name) and
    // instance, how many copies start after what delay (ms), the occurrence
    // id, and where: the host, the port of its agent, the routine that
    // starts it.
    struct Deployment {
        bool activated = true;
        QString vtNodeName;
        QString instance;
        int delay = 0;
        int number = 1;
        int occId = 0;
        QString hostIp;
        int portAgent = 0;
        QString startRoutine;

        friend bool operator==(const Deployment& a, const Deployment& b)
        {
            return a.activated == b.activated && a.vtNodeName == b.vtNodeName &&
                   a.instance == b.instance && a.delay == b.delay && a.number == b.number &&
                   a.occId == b.occId && a.hostIp == b.hostIp && a.portAgent == b.portAgent &&
                   a.startRoutine == b.startRoutine;
        }
    };

    // A rendezvous of instances: its name and how many instances meet there.
    struct Rendezvous {
        QString name;
        int number = 0;

        friend bool operator==(const Rendezvous& a, const Rendezvous& b)
        {
            return a.name == b.name && a.number == b.number;
        }
    };

    // A node read from its "system_testing" element.
    QAStNodeSystemTesting(const QDomElement& e, int version, QAStData* parent = nullptr,
                          QAStData* after = nullptr);

    QList<Deployment> deployments() const { return m_deployments; }
    void setDeployments(const QList<Deployment>& deployments);
    QList<Rendezvous> rendezvous() const { return m_rendezvous; }
    void setRendezvous(const QList<Rendezvous>& rendezvous);
    // The rendezvous are generated from the scripts rather than kept by
    // hand; on by default.
    bool rendezvousAutoGenerate() const { return m_autoGenerate; }
    void setRendezvousAutoGenerate(bool autoGenerate);
    // The names of the machines the instances run on.
    QStringList machines() const { return m_machines; }
    void setMachines(const QStringList& machines);

    // The trace channel the studio listens on for this node's run; not
    // saved.
    int connectedTDFChannel() const { return m_tdfChannel; }
    void setConnectedTDFChannel(int channel);

    void write(QTextStream& s, int indent) const override;
    // The base's environment lines, then the kind's own
    // (docs/formats/environment-script.md).
    void generateEnv(QTextStream& out) override;
    // The virtual testers' rendezvous configuration: $VT_RDV_AUTOGENERATE,
    // @VT_RDV_CONF (one ['name', number] per rendezvous) and @VT_MACHINES.
    void generateVtRdvConfEnv(QTextStream& out) const;
    // Every selected system-testing script of the node is a ".spv" file:
    // only the post-processing of earlier results is asked.
    bool isPostProcessingOnly() const;
    // The kind's driver (docs/formats/driver-scripts.md).
    // The absolute paths of the selected system-testing scripts.
    QStringList driverArguments() const override;
    bool executesDriver() const override;

protected:
    // The scripts run through the Execute driver: their runtime output is
    // split.
    bool splitsRuntimeOutput() const override;

    // Reads the "system_testing" element. Returns isValid().
    bool init(const QDomElement& e, int version);

private:
    void writeDeployments(QTextStream& s, int indent) const;
    // @VT_DEP_CONF: one bracketed entry per activated deployment.
    void writeDeploymentConfiguration(QTextStream& out) const;
    void writeRendezvous(QTextStream& s, int indent) const;
    void writeMachines(QTextStream& s, int indent) const;
    void initDeployments(const QDomElement& table);
    void initRendezvous(const QDomElement& list);
    void initMachines(const QDomElement& list);

    QList<Deployment> m_deployments;
    QList<Rendezvous> m_rendezvous;
    bool m_autoGenerate = true;
    QStringList m_machines;
    int m_tdfChannel = 0;
};
