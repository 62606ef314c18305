#include "hostsdk/kd_plain_text_edit.h"

#include "hostsdk/kd_main_data.h"
#include "tests/support/recording_observer.h"

#include <QApplication>
#include <QImage>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QtTest>

namespace
{

class TextEdit : public KdPlainTextEdit
{
public:
    using KdPlainTextEdit::KdPlainTextEdit;

    KdMainData *usedMainData() { return &mainData; }
    KdObserver *usedObserver() { return &observer; }
    QStringList seen;

protected:
    void focusInEvent(QFocusEvent *event) override
    {
        KdPlainTextEdit::focusInEvent(event);
        seen << QStringLiteral("in");
    }
    void focusOutEvent(QFocusEvent *event) override
    {
        KdPlainTextEdit::focusOutEvent(event);
        seen << QStringLiteral("out");
    }
    void hideEvent(QHideEvent *event) override
    {
        KdPlainTextEdit::hideEvent(event);
        seen << QStringLiteral("hide");
    }
};

} // namespace

class TestKdPlainTextEdit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsWhatItIsGiven();
    void editsText();
    void passesFocusAndHideOn();
};

void TestKdPlainTextEdit::keepsWhatItIsGiven()
{
    KdMainData mainData(nullptr);
    RecordingObserver observer;
    QWidget parent;
    TextEdit edit(&parent, mainData, observer);
    QCOMPARE(edit.parentWidget(), &parent);
    QCOMPARE(edit.usedMainData(), &mainData);
    QCOMPARE(edit.usedObserver(), static_cast<KdObserver *>(&observer));
    QCOMPARE(edit.metaObject()->superClass()->className(), "QPlainTextEdit");
}

void TestKdPlainTextEdit::editsText()
{
    KdMainData mainData(nullptr);
    RecordingObserver observer;
    TextEdit edit(nullptr, mainData, observer);
    edit.show();
    QVERIFY(QTest::qWaitForWindowExposed(&edit));
    QTest::keyClicks(&edit, QStringLiteral("abc"));
    QCOMPARE(edit.toPlainText(), QStringLiteral("abc"));
    QVERIFY(observer.events().empty());
}

void TestKdPlainTextEdit::passesFocusAndHideOn()
{
    QApplication::setCursorFlashTime(0);
    KdMainData mainData(nullptr);
    RecordingObserver observer;
    QWidget window;
    QVBoxLayout layout(&window);
    TextEdit edit(&window, mainData, observer);
    QLineEdit other(&window);
    layout.addWidget(&edit);
    layout.addWidget(&other);
    other.setFocus();
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    const QImage withoutCursor = edit.viewport()->grab().toImage();

    edit.setFocus();
    QCOMPARE(edit.seen, QStringList{QStringLiteral("in")});
    // The base class took part: it shows its text cursor while it has the focus.
    QVERIFY(edit.viewport()->grab().toImage() != withoutCursor);

    other.setFocus();
    QCOMPARE(edit.seen.last(), QStringLiteral("out"));
    QCOMPARE(edit.viewport()->grab().toImage(), withoutCursor);
    edit.hide();
    QCOMPARE(edit.seen.last(), QStringLiteral("hide"));
    QCOMPARE(edit.seen.size(), 3);
}

QTEST_MAIN(TestKdPlainTextEdit)
#include "tst_kd_plain_text_edit.moc"
