#include "FaultReport.h"

#include <QRandomGenerator>
#include <QtGlobal>

#include <cstdio>
#include <fstream>

namespace tessly::test {

bool triesAllFaults()
{
    return qEnvironmentVariableIsSet("TESSLY_ALL_FAULTS");
}

unsigned randomSeed()
{
    const unsigned seed = qEnvironmentVariableIsSet("TESSLY_SEED")
                              ? qgetenv("TESSLY_SEED").toUInt()
                              : QRandomGenerator::global()->generate();
    std::printf("seed %u\n", seed);
    return seed;
}

void reportFaults(const std::string& operation, const std::map<std::string, int>& outcomes)
{
    const QByteArray path = qgetenv("TESSLY_FAULT_REPORT");
    if (path.isEmpty()) {
        return;
    }
    int all = 0;
    std::string words;
    for (const auto& [outcome, count] : outcomes) {
        all += count;
        words += (words.empty() ? "" : ", ") + std::to_string(count) + " " + outcome;
    }
    std::ofstream(path.constData(), std::ios::app)
        << operation << '\t' << all << '\t' << words << '\n';
}

} // namespace tessly::test
