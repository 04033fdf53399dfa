// Not bound: the loader of Qt 6.4 refuses components that are.
import QtQuick
import Boxlift

// How it stands with one file.
Item {
    id: root

    required property Job job
    required property bool inSight

    implicitHeight: loader.height
    visible: loader.sourceComponent !== null

    // qmllint disable unqualified
    Component {
        id: analyzing

        AnalyzingStatus {
            inSight: root.inSight
        }
    }

    Component {
        id: blocked

        MessageLine {
            symbol: "exclamationmark.circle"
            text: root.job.blocker
            color: Theme.orange
        }
    }

    Component {
        id: ready

        PlanLine {
            mode: root.job.planMode
            text: root.job.planDetail
        }
    }

    Component {
        id: converting

        ConvertingStatus {
            job: root.job
        }
    }

    Component {
        id: done

        DoneStatus {
            job: root.job
        }
    }

    Component {
        id: failed

        MessageLine {
            symbol: "exclamationmark.triangle.fill"
            text: root.job.message
            color: Theme.red
        }
    }
    // qmllint enable unqualified

    Loader {
        id: loader

        width: parent.width
        sourceComponent: {
            switch (root.job.state) {
            case Job.Analyzing: return analyzing
            case Job.Ready: return root.job.blocker ? blocked : root.job.hasPlan ? ready : null
            case Job.Converting: return converting
            case Job.Done: return done
            default: return failed
            }
        }
    }
}
