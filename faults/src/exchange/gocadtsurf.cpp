#include "gocadtsurf.h"

#include <QHash>

#include <core/conventions.h>

#include "exchangeio.h"
#include "gocadobjectparser.h"
#include "textfields.h"

namespace fault::exchange {

namespace {

const QString kTSurf = QStringLiteral("TSurf");
constexpr int kTriangleFieldCount = 4; // TRGL a b c

class TSurfHandler : public GocadBodyHandler {
public:
    TSurfHandler(std::vector<TriangleMesh>& meshes, VerticalDomain& domain, const QString& defaultName)
        : m_meshes(meshes), m_domain(domain), m_defaultName(defaultName) {}

    bool bodyLine(const GocadHeader& header, const std::vector<TextField>& fields,
                  QString& problem) override
    {
        const QString& keyword = fields.front().text;
        if (keyword == QLatin1String("VRTX") || keyword == QLatin1String("PVRTX")) {
            int id = 0;
            core::vec3 world;
            if (!parseGocadVertex(header, fields, id, world, m_properties, problem)) return false;
            if (!addId(id, static_cast<int>(m_mesh.vertices.size()), problem)) return false;
            m_mesh.vertices.push_back(world);
            return true;
        }
        if (keyword == QLatin1String("ATOM")) return atom(fields, problem);
        if (keyword == QLatin1String("TRGL")) return triangle(fields, problem);
        return true;
    }

    bool endObject(const GocadHeader& header, QString&) override
    {
        m_mesh.name = header.name.isEmpty() ? m_defaultName : header.name;
        if (header.domain != VerticalDomain::Unknown) m_domain = header.domain;
        m_meshes.push_back(std::move(m_mesh));
        m_mesh = TriangleMesh();
        m_indexOfId.clear();
        return true;
    }

private:
    bool addId(int id, int index, QString& problem)
    {
        if (m_indexOfId.contains(id)) {
            problem = QStringLiteral("vertex id %1 is used twice").arg(id);
            return false;
        }
        m_indexOfId.insert(id, index);
        return true;
    }

    bool atom(const std::vector<TextField>& fields, QString& problem)
    {
        int id = 0, reference = 0;
        if (fields.size() < 3 || !parseInteger(fields[1].text, id) ||
            !parseInteger(fields[2].text, reference)) {
            problem = QStringLiteral("ATOM needs a new id and the id of an earlier vertex");
            return false;
        }
        const int index = m_indexOfId.value(reference, core::kNoValue);
        if (index == core::kNoValue) {
            problem = QStringLiteral("ATOM %1 refers to vertex %2, which does not exist")
                          .arg(id).arg(reference);
            return false;
        }
        return addId(id, index, problem);
    }

    bool triangle(const std::vector<TextField>& fields, QString& problem)
    {
        if (static_cast<int>(fields.size()) < kTriangleFieldCount) {
            problem = QStringLiteral("TRGL needs three vertex ids");
            return false;
        }
        std::array<int, 3> corners{};
        for (int corner = 0; corner < 3; ++corner) {
            int id = 0;
            const QString& text = fields[1 + corner].text;
            const int index = parseInteger(text, id) ? m_indexOfId.value(id, core::kNoValue)
                                                     : core::kNoValue;
            if (index == core::kNoValue) {
                problem = QStringLiteral("TRGL refers to vertex \"%1\", which does not exist").arg(text);
                return false;
            }
            corners[corner] = index;
        }
        m_mesh.triangles.push_back(corners);
        return true;
    }

    std::vector<TriangleMesh>& m_meshes;
    VerticalDomain& m_domain;
    QString m_defaultName;
    TriangleMesh m_mesh;             // the object being read
    QHash<int, int> m_indexOfId;     // vertex id -> index in m_mesh.vertices
    std::vector<double> m_properties;
};

void writeMesh(QTextStream& out, const TriangleMesh& mesh, VerticalDomain domain)
{
    out << gocadObjectHeader(kTSurf, mesh.name, domain) << "TFACE\n";
    for (size_t i = 0; i < mesh.vertices.size(); ++i)
        out << gocadVertexLine("VRTX", static_cast<int>(i) + 1, mesh.vertices[i]) << '\n';
    for (const std::array<int, 3>& t : mesh.triangles)
        out << "TRGL " << t[0] + 1 << ' ' << t[1] + 1 << ' ' << t[2] + 1 << '\n';
    out << "END\n";
}

} // namespace

ExchangeStatus readGocadTSurf(const QString& path, std::vector<TriangleMesh>& meshes,
                              VerticalDomain* domain, const QString& defaultName)
{
    std::vector<TriangleMesh> read;
    VerticalDomain readDomain = VerticalDomain::Unknown;
    TSurfHandler handler(read, readDomain, defaultName);
    GocadObjectParser parser(kTSurf, handler);
    ExchangeStatus status = readTextLines(
        path, [&parser](const QString& line, QString& problem) { return parser.parse(line, problem); });
    QString problem;
    if (status && !parser.finish(problem)) status = ExchangeStatus::failure(path, 0, problem);
    if (!status) return status;
    meshes = std::move(read);
    if (domain) *domain = readDomain;
    return status;
}

ExchangeStatus writeGocadTSurf(const QString& path, const std::vector<TriangleMesh>& meshes,
                               VerticalDomain domain)
{
    return writeTextFile(path, [&meshes, domain](QTextStream& out, QString& problem) {
        for (const TriangleMesh& mesh : meshes) {
            problem = faultNameProblem(mesh.name, true);
            if (!problem.isEmpty()) return false;
            const int bad = mesh.firstBadTriangle();
            if (bad != core::kNoValue) {
                problem = QStringLiteral("triangle %1 of %2 refers to a vertex it does not have")
                              .arg(bad).arg(mesh.name);
                return false;
            }
            writeMesh(out, mesh, domain);
        }
        return true;
    });
}

} // namespace fault::exchange
