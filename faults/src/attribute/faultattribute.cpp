#include "attribute/faultattribute.h"

#include <algorithm>
#include <cstdint>
#include <memory>

#include <znbloc.h>
#include <zneventbus.h>
#include <znprogressbarmgr.h>
#include <znstridedprogress.h>

#include "attribute/attributeslabplan.h"
#include "attribute/faultattributefinisher.h"
#include "attribute/faultscanner.h"
#include "attribute/nodatamask.h"
#include "attribute/reflectorslopes.h"
#include "attribute/semblancefactors.h"
#include "attribute/semblancereference.h"

namespace fault::attribute {
namespace {

const QString kCancelled = QStringLiteral("cancelled");

int chunkCount(int slices, int chunk) { return (slices + chunk - 1) / chunk; }

// One run of the attribute over every slab of a volume.
class AttributeRun {
public:
    AttributeRun(SeismicSlices& seismic, AttributeSlices& out, const FaultAttributeSettings& settings,
                 const ScanPlan& scans, const AttributeSlabPlan& slabs)
        : m_seismic(seismic), m_out(out), m_settings(settings), m_slabs(slabs), m_scanner(scans),
          m_finisher(scans, settings, seismic.blocSpace()), m_nz(seismic.blocSpace().nz())
    {
    }

    // Progress items of the whole run.
    qint64 itemCount() const
    {
        qint64 items = 0;
        for (int z0 = 0; z0 < m_nz; z0 += m_slabs.slabSlices) {
            const Ranges r = rangesOf(z0);
            items += chunkCount(r.slopeEnd - r.slopeFirst, m_slabs.chunkSlices) +
                     chunkCount(r.factorEnd - r.factorFirst, m_slabs.chunkSlices) + m_scanner.progressSteps() +
                     chunkCount(r.keyedEnd - r.keyedFirst, kOutputChunkSlices);
        }
        return items;
    }

    QString run(ZNStridedProgress& progress)
    {
        for (int z0 = 0; z0 < m_nz; z0 += m_slabs.slabSlices) {
            const QString error = slab(rangesOf(z0), progress);
            if (!error.isEmpty()) return error;
        }
        return {};
    }

private:
    // The volume slices one slab works on.
    struct Ranges {
        int keyedFirst, keyedEnd;     // slices scanned and written
        int factorFirst, factorEnd;   // slices of semblance factors the scan reads
        int slopeFirst, slopeEnd;     // slices whose gradients give the slopes
    };
    Ranges rangesOf(int z0) const
    {
        Ranges r;
        r.keyedFirst = z0;
        r.keyedEnd = std::min(m_nz, z0 + m_slabs.slabSlices);
        r.factorFirst = std::max(0, r.keyedFirst - m_slabs.scanHalo);
        r.factorEnd = std::min(m_nz, r.keyedEnd + m_slabs.scanHalo);
        r.slopeFirst = std::max(0, r.factorFirst - m_slabs.slopeHalo) & ~1;
        r.slopeEnd = std::min(m_nz, r.factorEnd + m_slabs.slopeHalo);
        return r;
    }

    // Reads seismic slices [from, to) with `halo` more on either side where the volume
    // has them; `first` is set to the volume slice of the image's first slice.
    bool readSeismic(int from, int to, int halo, ZN3DImage<float>& out, int& first)
    {
        first = std::max(0, from - halo);
        const int end = std::min(m_nz, to + halo);
        return m_seismic.read(first, end - first, out) && out.nz() == end - first &&
               out.nx() == m_seismic.blocSpace().nx() && out.ny() == m_seismic.blocSpace().ny();
    }
    static QString unreadable(int from, int to)
    {
        return QStringLiteral("the seismic slices %1 to %2 cannot be read").arg(from).arg(to - 1);
    }

    // Keys the slab's slices and writes their outputs.
    QString slab(const Ranges& r, ZNStridedProgress& progress)
    {
        const int nx = m_seismic.blocSpace().nx(), ny = m_seismic.blocSpace().ny();
        ReflectorSlopes slopes;
        if (!slopes.begin(nx, ny, m_nz, r.slopeFirst, r.slopeEnd)) return outOfMemory();
        for (int c0 = r.slopeFirst; c0 < r.slopeEnd; c0 += m_slabs.chunkSlices) {
            const int c1 = std::min(r.slopeEnd, c0 + m_slabs.chunkSlices);
            ZN3DImage<float> seismic;
            int first = 0;
            if (!readSeismic(c0, c1, ReflectorSlopes::kGradientHalo, seismic, first)) return unreadable(c0, c1);
            slopes.accumulate(seismic, first, c0, c1);
            if (progress.next()) return kCancelled;
        }
        slopes.finish(m_settings.slopeSigma, m_settings.maxReflectorSlope);

        SlabArray<float> numerator, denominator;
        const int factorSlices = r.factorEnd - r.factorFirst;
        if (!numerator.allocate(nx, ny, factorSlices) || !denominator.allocate(nx, ny, factorSlices))
            return outOfMemory();
        const int halo = factorHalo(m_settings.maxReflectorSlope);
        NoDataMask noData;
        if (!noData.allocate(nx, ny, r.keyedFirst, r.keyedEnd)) return outOfMemory();
        for (int c0 = r.factorFirst; c0 < r.factorEnd; c0 += m_slabs.chunkSlices) {
            const int c1 = std::min(r.factorEnd, c0 + m_slabs.chunkSlices);
            ZN3DImage<float> seismic;
            int first = 0;
            if (!readSeismic(c0, c1, halo, seismic, first)) return unreadable(c0, c1);
            computeSemblanceFactors(seismic, first, slopes, c0, c1 - c0, numerator.slice(c0 - r.factorFirst),
                                    denominator.slice(c0 - r.factorFirst));
            noData.mark(seismic, first, c0, c1, m_nz);
            if (progress.next()) return kCancelled;
        }
        slopes.release();
        SemblanceReference reference;
        if (!reference.compute(numerator, denominator, r.factorFirst, m_nz, m_settings.referenceSigma))
            return outOfMemory();
        reference.balance(numerator, denominator, r.factorFirst);
        reference.release();

        SlabArray<std::uint32_t> keys;
        if (!keys.allocate(nx, ny, r.keyedEnd - r.keyedFirst)) return outOfMemory();
        if (!m_scanner.scan(numerator, denominator, r.factorFirst, keys, r.keyedFirst, progress))
            return progress.isCancelled() ? kCancelled : outOfMemory();
        numerator.release();
        denominator.release();
        noData.clearKeys(keys, r.keyedFirst);
        return finish(keys, r.keyedFirst, progress);
    }

    // The outputs of the keyed slices, a few slices at a time.
    QString finish(const SlabArray<std::uint32_t>& keys, int z0, ZNStridedProgress& progress)
    {
        const int nx = keys.na(), ny = keys.nb();
        const bool orientation = m_out.wantsOrientation();
        for (int k0 = 0; k0 < keys.nz(); k0 += kOutputChunkSlices) {
            const int count = std::min(kOutputChunkSlices, keys.nz() - k0);
            const georef::BlocSpace space(nx, ny, count);
            ZN3DImage<float> likelihood(space), strike, dip;
            if (orientation) {
                strike = ZN3DImage<float>(space);
                dip = ZN3DImage<float>(space);
            }
            SlabArray<float> scratch;
            if (likelihood.isNull() || strike.isNull() || dip.isNull() || !scratch.allocate(nx, ny, count))
                return outOfMemory();
#pragma omp parallel for schedule(dynamic, 1)
            for (int k = 0; k < count; ++k)
                m_finisher.finish(keys.slice(k0 + k), nx, ny, z0 + k0 + k, likelihood.slice(k),
                                  orientation ? strike.slice(k) : nullptr, orientation ? dip.slice(k) : nullptr,
                                  scratch.slice(k));
            if (!m_out.write(z0 + k0, likelihood, strike, dip))
                return QStringLiteral("the fault likelihood slices %1 to %2 cannot be written")
                    .arg(z0 + k0).arg(z0 + k0 + count - 1);
            if (progress.next()) return kCancelled;
        }
        return {};
    }

    static QString outOfMemory() { return QStringLiteral("not enough memory for the fault likelihood"); }

    SeismicSlices& m_seismic;
    AttributeSlices& m_out;
    const FaultAttributeSettings& m_settings;
    const AttributeSlabPlan& m_slabs;
    FaultScanner m_scanner;
    FaultAttributeFinisher m_finisher;
    int m_nz;
};

QString reported(const QString& error)
{
    if (!error.isEmpty() && error != kCancelled)
        ZNEventBus::sendMessage(ZNEventBus::Error, QStringLiteral("Fault likelihood: ") + error);
    return error;
}

// Outputs gathered into images covering the whole volume.
class ImageOutputs : public AttributeSlices {
public:
    ImageOutputs(FaultAttributeVolumes& volumes, bool orientation) : m_volumes(volumes), m_orientation(orientation) {}
    bool wantsOrientation() const override { return m_orientation; }
    bool write(int z, const ZN3DImage<float>& likelihood, const ZN3DImage<float>& strike,
               const ZN3DImage<float>& dip) override
    {
        copy(likelihood, z, m_volumes.likelihood);
        if (m_orientation) {
            copy(strike, z, m_volumes.strike);
            copy(dip, z, m_volumes.dip);
        }
        return true;
    }

private:
    static void copy(const ZN3DImage<float>& part, int z, ZN3DImage<float>& whole)
    {
        std::copy(part.data(), part.data() + part.voxelCount(), whole.slice(z));
    }

    FaultAttributeVolumes& m_volumes;
    bool m_orientation;
};

// Outputs written into created block files.
class BlocOutputs : public AttributeSlices {
public:
    BlocOutputs(ZNBloc& likelihood, ZNBloc* strike, ZNBloc* dip) : m_likelihood(likelihood), m_strike(strike), m_dip(dip) {}
    bool wantsOrientation() const override { return m_strike != nullptr || m_dip != nullptr; }
    bool write(int z, const ZN3DImage<float>& likelihood, const ZN3DImage<float>& strike,
               const ZN3DImage<float>& dip) override
    {
        const int n = likelihood.nz();
        return m_likelihood.writeSlices(z, likelihood, 0, n) &&
               (m_strike == nullptr || m_strike->writeSlices(z, strike, 0, n)) &&
               (m_dip == nullptr || m_dip->writeSlices(z, dip, 0, n));
    }

private:
    ZNBloc& m_likelihood;
    ZNBloc* m_strike;
    ZNBloc* m_dip;
};

} // namespace

QString computeFaultAttribute(SeismicSlices& seismic, AttributeSlices& out,
                              const FaultAttributeSettings& settings, int progressParent,
                              long long maxWorkingBytes)
{
    const QString problem = settings.problem();
    if (!problem.isEmpty()) return reported(QStringLiteral("invalid settings: ") + problem);
    const georef::BlocSpace& space = seismic.blocSpace();
    const ScanPlan scans = planScans(settings);
    const AttributeSlabPlan slabs =
        planAttributeSlabs(space.nx(), space.ny(), space.nz(), scans, settings, maxWorkingBytes);
    if (!slabs.isValid())
        return reported(QStringLiteral("a volume of %1 x %2 x %3 leaves no slab within the memory budget")
                            .arg(space.nx()).arg(space.ny()).arg(space.nz()));
    AttributeRun run(seismic, out, settings, scans, slabs);
    ZNStridedProgress progress(QStringLiteral("Fault likelihood"), run.itemCount(), progressParent);
    return reported(run.run(progress));
}

FaultAttributeVolumes computeFaultAttribute(const ZN3DImage<float>& seismic,
                                            const FaultAttributeSettings& settings,
                                            bool withOrientation, int progressParent)
{
    FaultAttributeVolumes volumes;
    if (seismic.isEmpty()) {
        volumes.error = reported(QStringLiteral("the seismic volume is empty"));
        return volumes;
    }
    volumes.likelihood = ZN3DImage<float>(seismic.blocSpace());
    if (withOrientation) {
        volumes.strike = ZN3DImage<float>(seismic.blocSpace());
        volumes.dip = ZN3DImage<float>(seismic.blocSpace());
    }
    if (volumes.likelihood.isNull() || volumes.strike.isNull() || volumes.dip.isNull()) {
        volumes = FaultAttributeVolumes();
        volumes.error = reported(QStringLiteral("not enough memory for the fault likelihood"));
        return volumes;
    }
    ImageSeismicSlices source(seismic);
    ImageOutputs outputs(volumes, withOrientation);
    const auto cap = static_cast<long long>(kInMemoryWorkingShare * static_cast<double>(seismic.voxelCount()) *
                                            sizeof(float));
    const QString error = computeFaultAttribute(source, outputs, settings, progressParent, cap);
    if (!error.isEmpty()) {
        volumes = FaultAttributeVolumes();
        volumes.error = error;
    }
    return volumes;
}

QString computeFaultAttributeFiles(SeismicSlices& seismic, const FaultAttributeFiles& files,
                                   const georef::UnitObject& units,
                                   const FaultAttributeSettings& settings, int progressParent)
{
    if (files.likelihood.isEmpty()) return reported(QStringLiteral("no file given for the likelihood"));
    const georef::BlocSpace& space = seismic.blocSpace();
    ZNBloc likelihood, strike, dip;
    auto create = [&](ZNBloc& bloc, const QString& path) {
        return path.isEmpty() || bloc.create(path, space, 0, space.nz(), ZNBloc::Float32, units);
    };
    if (!create(likelihood, files.likelihood) || !create(strike, files.strike) || !create(dip, files.dip))
        return reported(QStringLiteral("the fault likelihood files cannot be created"));
    BlocOutputs outputs(likelihood, files.strike.isEmpty() ? nullptr : &strike, files.dip.isEmpty() ? nullptr : &dip);
    const QString error = computeFaultAttribute(seismic, outputs, settings, progressParent);
    if (!error.isEmpty()) return error;   // the created blocks are dropped: targets untouched
    if (!likelihood.close() || (!files.strike.isEmpty() && !strike.close()) || (!files.dip.isEmpty() && !dip.close()))
        return reported(QStringLiteral("the fault likelihood files cannot be completed"));
    return {};
}

} // namespace fault::attribute
