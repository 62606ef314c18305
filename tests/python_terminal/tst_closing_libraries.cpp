#include "tests/python_terminal/closing_scripts.h"

#include <QtTest>

/// The tool closes while a script uses libraries that have threads or much memory of their own.
class TestClosingLibraries : public ClosingScripts
{
    Q_OBJECT

public:
    TestClosingLibraries() : ClosingScripts(ClosingLimits::variantRounds()) { }

private:
    void addScripts() override;
};

void TestClosingLibraries::addScripts()
{
    row("pool of threads", R"(
import concurrent.futures, time
pool = concurrent.futures.ThreadPoolExecutor(4)
jobs = [pool.submit(time.sleep, 60) for i in range(8)]
print('reached')
concurrent.futures.wait(jobs)
)",
        true);
    row("idle pool of threads", R"(
import concurrent.futures, time
pool = concurrent.futures.ThreadPoolExecutor(4)
list(pool.map(abs, range(100)))
print('reached')
time.sleep(60)
)",
        true);
    row("asyncio with a pool", R"(
import asyncio, time
async def main():
    loop = asyncio.get_event_loop()
    print('reached')
    await loop.run_in_executor(None, time.sleep, 60)
asyncio.run(main())
)",
        true);
    row("server", R"(
import http.server, threading
s = http.server.HTTPServer(('127.0.0.1', 0), http.server.BaseHTTPRequestHandler)
threading.Thread(target=s.serve_forever, args=(0.01,), daemon=True).start()
print('reached')
s.serve_forever()
)",
        true);
    row("database", R"(
import sqlite3, time
db = sqlite3.connect(':memory:')
db.execute('create table t (x)')
db.executemany('insert into t values (?)', [(i,) for i in range(1000)])
print('reached')
time.sleep(60)
)",
        true);
    row("database that calls back", R"(
import sqlite3
db = sqlite3.connect(':memory:')
db.create_function('f', 1, lambda x: x)
print('reached')
while True: db.execute('with recursive c(x) as (select 1 union all select x + 1 from c) select f(x) from c limit 1000').fetchall()
)",
        false);
    row("encryption", R"(
import hashlib, ssl, time
ssl.create_default_context()
hashlib.pbkdf2_hmac('sha256', b'x', b'y', 1000)
print('reached')
time.sleep(60)
)",
        true);
}

QTEST_MAIN(TestClosingLibraries)

#include "tst_closing_libraries.moc"
