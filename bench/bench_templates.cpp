// Template substitution on very large bodies, where its cost would show:
// ten megabytes with 1.4 million placeholders whose values differ in length.
//
//   bench_templates

#include "Variables.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

int main()
{
    QString text;
    text.reserve(10'000'000);
    for (int i = 0; text.size() < 10'000'000; ++i)
        text += i % 3 == 0 ? u"{{a}} and {{ b }}, " : u"{{c}}; ";
    const QHash<QString, QString> values{{QStringLiteral("a"), QStringLiteral("a longer value")},
                                         {QStringLiteral("b"), QString()}};
    std::vector<double> times;
    qsizetype size = 0;
    for (int run = 0; run < 5; ++run) {
        QElapsedTimer timer;
        timer.start();
        size = Variables::substitute(text, values).size();
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    std::printf("substitute, %.1f MB body, %lld placeholders: median %.0f ms, worst %.0f ms (result %.1f MB)\n",
                text.size() / 1e6, static_cast<long long>(text.count(u"{{")), times[2], times[4], size / 1e6);
    std::printf("extract, same body: %.0f ms\n", [&] {
        QElapsedTimer timer;
        timer.start();
        Variables::extract(text);
        return timer.nsecsElapsed() / 1e6;
    }());
    return 0;
}
