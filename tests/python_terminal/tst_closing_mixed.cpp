#include "tests/python_terminal/closing_test.h"
#include "tests/python_terminal/process_census.h"

#include <QtTest>

#include <array>
#include <memory>
#include <random>

/// States at random, one after the other in one process: whatever one leaves behind meets all others.
class TestClosingMixed : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void statesAtRandom();
};

namespace
{

constexpr std::array<const char *, 20> scripts = {
    "print('reached')\n",
    "print('reached')\nwhile True: pass\n",
    "import time\nprint('reached')\ntime.sleep(60)\n",
    "print('reached')\ninput()\n",
    "import time\nprint('reached')\nwhile True:\n    try: time.sleep(60)\n    except: pass\n",
    "print('reached')\nwhile True:\n    try: input()\n    except: pass\n",
    "import time\ntry:\n    print('reached')\n    time.sleep(60)\nfinally:\n    while True: pass\n",
    "import socket\ns = socket.socket()\ns.bind(('127.0.0.1', "
    "0))\ns.listen()\nprint('reached')\ns.accept()\n",
    "print('reached')\nwhile True: print(1)\n",
    "import threading, time\nthreading.Thread(target=time.sleep, args=(60,), "
    "daemon=True).start()\nprint('reached')\n",
    "import threading, time\nthreading.Thread(target=time.sleep, args=(60,)).start()\nprint('reached')\n",
    "import atexit, time\natexit.register(time.sleep, 60)\nprint('reached')\n",
    "import sys\nprint('reached')\nsys.stdout.close()\nsys.exit()\n",
    "import asyncio\nasync def main():\n    print('reached')\n    await "
    "asyncio.sleep(60)\nasyncio.run(main())\n",
    "import re\nprint('reached')\nre.match('(a+)+b', 'a' * 40)\n",
    "import signal, time\nsignal.signal(signal.SIGURG, signal.SIG_IGN)\nprint('reached')\ntime.sleep(60)\n",
    "import concurrent.futures, time\np = concurrent.futures.ThreadPoolExecutor(4)\np.submit(time.sleep, "
    "60)\n"
    "print('reached')\n",
    "import ssl, sqlite3, "
    "hashlib\nssl.create_default_context()\nsqlite3.connect(':memory:')\nprint('reached')\n",
    "import decimal, ctypes, logging, json, unittest, pdb\nprint('reached')\nlogging.warning('x')\n",
    "class C:\n    def __del__(self):\n        while True: pass\nx = C()\nprint('reached')\n",
};

} // namespace

void TestClosingMixed::statesAtRandom()
{
    ClosingTest test;
    QCOMPARE(test.prepare(), QString());
    const unsigned int seed = std::random_device()();
    qInfo("seed %u", seed);
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::size_t> choice(0, scripts.size() - 1);
    const int rounds = ClosingLimits::variantRounds() * 15;
    qint64 before = 0;
    for (int i = 0; i < rounds; ++i) {
        // The first tenth loads what Python then keeps.
        if (i == rounds / 10)
            before = process_census::residentKiB();
        const char *script = scripts.at(choice(random));
        const QString wrong = test.closeOnceWhile(QString::fromLatin1(script), false);
        QVERIFY2(wrong.isEmpty(),
                 qPrintable(QStringLiteral("seed %1, round %2, %3: %4")
                                .arg(seed)
                                .arg(i)
                                .arg(QString::fromLatin1(script), wrong.right(2000))));
    }
    qInfo("%.1f KiB a round", double(process_census::residentKiB() - before) / (rounds - rounds / 10));
    QCOMPARE(test.whatIsLeft(), QString());
}

QTEST_MAIN(TestClosingMixed)

#include "tst_closing_mixed.moc"
