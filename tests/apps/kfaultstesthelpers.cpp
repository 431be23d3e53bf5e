#include "kfaultstesthelpers.h"

#include <csignal>
#include <sstream>

#include <QDir>

#include <core/multiarray.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>

#include <commandline.h>

namespace kfaultstest {

Outcome runTool(std::vector<std::string> args, const QString& folder)
{
    for (std::string& a : args)
        if (!folder.isEmpty() && a.rfind("@", 0) == 0)
            a = QDir(folder).filePath(QString::fromStdString(a.substr(1))).toStdString();
    args.insert(args.begin(), "kfaults");
    std::ostringstream out, err;
    Outcome r;
    r.code = kfaults::runKfaults(args, out, err);
    r.out = out.str();
    r.err = err.str();
    return r;
}

bool writeCommandInputs(const QString& folder, int faults)
{
    core::MultiArray<core::vec3> rows(faults);
    for (int f = 0; f < faults; ++f)
        for (int s = 0; s < 3; ++s) {
            if (s > 0) rows.addElement(f, core::vec3(-9999.0, -9999.0, -9999.0), false);
            for (int p = 0; p < 3; ++p) rows.addElement(f, core::vec3(1000.0 * f + 10 * s, 50.0 * p, 20.0 * s), false);
        }
    ZNFaultPatchManager set(rows);
    for (int f = 1; f <= faults; ++f) set.findFaultLight(f)->SetFaultName(QStringLiteral("F%1").arg(f));
    return set.writePickedFault(QDir(folder).filePath("set.faultset"), false, nullptr, false) &&
           runTool({"sticks", "export", "@set.faultset", "@sticks.txt", "--format", "opendtect"}, folder).code == 0;
}

FileSizeLimit::FileSizeLimit(rlim_t bytes)
{
    m_signal = std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &m_previous);
    rlimit limit = m_previous;
    limit.rlim_cur = bytes;
    m_set = setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

FileSizeLimit::~FileSizeLimit()
{
    setrlimit(RLIMIT_FSIZE, &m_previous);
    std::signal(SIGXFSZ, m_signal);
}

} // namespace kfaultstest
