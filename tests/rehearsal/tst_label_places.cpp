#include "workbench/rehearsal/label_places.h"

#include <QTest>

#include <cmath>

using rehearsal::labelPlaces;

class TestLabelPlaces : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void places_data()
    {
        using Shares = QVector<double>;
        QTest::addColumn<Shares>("own");
        QTest::addColumn<Shares>("places");
        QTest::newRow("none") << Shares{} << Shares{};
        QTest::newRow("one") << Shares{0.3} << Shares{0.3};
        QTest::newRow("far enough apart") << Shares{0, 0.2, 1} << Shares{0, 0.2, 1};
        QTest::newRow("two give way to one another") << Shares{0.5, 0.5} << Shares{0.45, 0.55};
        QTest::newRow("a row around its middle") << Shares{0.48, 0.5, 0.52} << Shares{0.4, 0.5, 0.6};
        QTest::newRow("one in the way joins in") << Shares{0.4, 0.52, 0.52} << Shares{0.38, 0.48, 0.58};
        QTest::newRow("not above the top") << Shares{0.97, 1} << Shares{0.9, 1};
        QTest::newRow("not below the bottom") << Shares{0, 0.01, 0.5} << Shares{0, 0.1, 0.5};
        QTest::newRow("more than there is room for")
            << Shares(21, 0.5) << Shares{0,    0.05, 0.1,  0.15, 0.2,  0.25, 0.3,  0.35, 0.4,  0.45, 0.5,
                                         0.55, 0.6,  0.65, 0.7,  0.75, 0.8,  0.85, 0.9,  0.95, 1};
    }

    void places()
    {
        QFETCH(QVector<double>, own);
        QFETCH(QVector<double>, places);
        const QVector<double> found = labelPlaces(own, 0.1);
        QCOMPARE(found.size(), places.size());
        for (int i = 0; i < found.size(); ++i)
            QVERIFY2(std::abs(found.at(i) - places.at(i)) < 1e-9,
                     qPrintable(QStringLiteral("%1: %2").arg(i).arg(found.at(i))));
    }
};

QTEST_GUILESS_MAIN(TestLabelPlaces)
#include "tst_label_places.moc"
