#include "detect/digital_filter.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <memory>
#include <numbers>

// liquid.h takes std::complex for its complex type when <complex> comes first.
#include <liquid/liquid.h>

#include "core/number_text.h"
#include "detect/filter_lanes.h"

namespace ardel {

namespace {

using Complex = std::complex<double>;

// One factor 1 + c1 z^-1 + c2 z^-2 of a numerator or denominator, and a root it stands for
// (to put each pole pair with the zero pair nearest to it).
struct Quadratic {
    double c1 = 0, c2 = 0;
    Complex root;
};

// Groups roots into conjugate pairs and pairs of real roots, as quadratic factors.
std::vector<Quadratic> Quadratics(const std::vector<Complex>& roots) {
    std::vector<Quadratic> q;
    std::vector<double> reals;
    for (const Complex& r : roots) {
        const double tol = 1e-9 * std::max(1.0, std::abs(r));
        if (r.imag() > tol)
            q.push_back({-2 * r.real(), std::norm(r), r});
        else if (r.imag() >= -tol)
            reals.push_back(r.real());
        // The lower member of a conjugate pair comes with its upper one.
    }
    std::sort(reals.begin(), reals.end());
    std::size_t i = 0;
    for (; i + 1 < reals.size(); i += 2)
        q.push_back({-(reals[i] + reals[i + 1]), reals[i] * reals[i + 1],
                     Complex((reals[i] + reals[i + 1]) / 2, 0)});
    if (i < reals.size()) q.push_back({-reals[i], 0, Complex(reals[i], 0)});
    return q;
}

}  // namespace

void IirFilter::Apply(std::span<double> data) const {
    for (const Biquad& q : sections) {
        // Transposed direct form II, from rest.
        double s1 = 0, s2 = 0;
        for (double& x : data) {
            const double in = x;
            const double y = q.b0 * in + s1;
            s1 = q.b1 * in - q.a1 * y + s2;
            s2 = q.b2 * in - q.a2 * y;
            x = y;
        }
    }
}

std::complex<double> IirFilter::Response(double f) const {
    const Complex w = std::polar(1.0, -2 * std::numbers::pi * f);  // z^-1
    Complex h = 1;
    for (const Biquad& q : sections)
        h *= (q.b0 + q.b1 * w + q.b2 * w * w) / (1.0 + q.a1 * w + q.a2 * w * w);
    return h;
}

std::optional<IirFilter> DesignDigitalFilter(int filterType, double samplingHz, double cutoffHz) {
    if (filterType < 0 || filterType >= int(kFilterTypeCaptions.size())) return std::nullopt;
    if (!(samplingHz > 0) || !std::isfinite(samplingHz)) return std::nullopt;
    const double fc = cutoffHz / samplingHz;
    if (!(fc > 0 && fc < 0.5)) return std::nullopt;
    const bool highPass = filterType % 2 == 1;
    const int family = filterType / 2;  // Butterworth, Chebyshev, inverse Chebyshev, elliptic

    // The analog prototype (cut-off 1 rad/s) comes from liquid-dsp, with the gain convention
    // of its own designer. The digital transform below is done in double precision: in single
    // precision a high-pass of a few Hz at tens of kHz, the usual way to take out drift, loses
    // its poles to rounding.
    constexpr unsigned n = kFilterOrder;
    liquid_float_complex za[n], pa[n], ka;
    unsigned nza = 0;
    double k0 = 1;
    int rc = LIQUID_OK;
    switch (family) {
        case 0:
            rc = butter_azpkf(n, za, pa, &ka);
            break;
        case 1: {
            const double ep = std::sqrt(std::pow(10.0, kFilterRippleDb / 10.0) - 1.0);
            // An even order starts at the bottom of the ripple.
            k0 = 1.0 / std::sqrt(1.0 + ep * ep);
            rc = cheby1_azpkf(n, float(ep), za, pa, &ka);
            break;
        }
        case 2: {
            const double es = std::pow(10.0, -kFilterAttenuationDb / 20.0);
            nza = n;
            rc = cheby2_azpkf(n, float(es), za, pa, &ka);
            break;
        }
        default: {
            const double gp = std::pow(10.0, -kFilterRippleDb / 20.0);
            const double gs = std::pow(10.0, -kFilterAttenuationDb / 20.0);
            const double ep = std::sqrt(1.0 / (gp * gp) - 1.0);
            const double es = std::sqrt(1.0 / (gs * gs) - 1.0);
            k0 = 1.0 / std::sqrt(1.0 + ep * ep);
            nza = n;
            rc = ellip_azpkf(n, float(ep), float(es), za, pa, &ka);
            break;
        }
    }
    if (rc != LIQUID_OK) return std::nullopt;

    // Bilinear transform with pre-warping. A high-pass is the low-pass of the mirrored cut-off
    // 0.5 - fc, turned over by z -> -z.
    const double m =
        highPass ? 1.0 / std::tan(std::numbers::pi * fc) : std::tan(std::numbers::pi * fc);
    std::vector<Complex> zd(n), pd(n);
    Complex gain = k0;
    for (unsigned i = 0; i < n; ++i) {
        const Complex zm = i < nza ? Complex(za[i].real(), za[i].imag()) * m : Complex(0);
        zd[i] = i < nza ? (1.0 + zm) / (1.0 - zm) : Complex(-1, 0);
        const Complex pm = Complex(pa[i].real(), pa[i].imag()) * m;
        pd[i] = (1.0 + pm) / (1.0 - pm);
        gain *= (1.0 - pd[i]) / (1.0 - zd[i]);
    }
    if (highPass) {
        for (auto& z : zd) z = -z;
        for (auto& p : pd) p = -p;
    }

    std::vector<Quadratic> poles = Quadratics(pd);
    std::vector<Quadratic> zeros = Quadratics(zd);
    if (poles.size() != zeros.size() || poles.empty()) return std::nullopt;
    std::sort(poles.begin(), poles.end(), [](const Quadratic& a, const Quadratic& b) {
        return std::abs(a.root) < std::abs(b.root);
    });
    const double g = gain.real();
    const double perSection = std::pow(std::abs(g), 1.0 / double(poles.size()));
    IirFilter filter;
    for (std::size_t i = 0; i < poles.size(); ++i) {
        auto nearest = std::min_element(
            zeros.begin(), zeros.end(), [&](const Quadratic& a, const Quadratic& b) {
                return std::abs(a.root - poles[i].root) < std::abs(b.root - poles[i].root);
            });
        const double k = i == 0 && g < 0 ? -perSection : perSection;
        filter.sections.push_back({k, k * nearest->c1, k * nearest->c2, poles[i].c1, poles[i].c2});
        zeros.erase(nearest);
    }
    for (const Biquad& q : filter.sections)
        for (double c : {q.b0, q.b1, q.b2, q.a1, q.a2})
            if (!std::isfinite(c)) return std::nullopt;
    return filter;
}

double SamplingFrequency(const Recording& rec) {
    return 1000000.0 / double(rec.SampleInterval);
}

std::optional<std::string> CutoffMessage(double cutoffHz, double samplingHz) {
    if (!(2 * cutoffHz > samplingHz)) return std::nullopt;
    return "The cutoff frequency has to be less than a half of sampling frequency.  The sampling "
           "frequency of this record is " +
           Format(samplingHz, "0") + ".  Please adjust the cut-off frequency accordingly.";
}

namespace {

// The last design, kept so that a run over thousands of screens designs its filter once.
struct DesignCache {
    int type = -1;
    double fs = 0, fc = 0;
    std::optional<IirFilter> filter;
    // The lanes' plan for runs of lanesRun points (0 before the first run or after a new
    // design), and the run's points going in and out.
    bool useLanes = true;
    std::size_t lanesRun = 0;
    std::unique_ptr<LaneFilter> lanes;
    std::vector<std::int16_t> run;
    std::vector<std::int16_t> filtered;
};

// The cascade run over a stream one sample at a time, all sections at once: each sample goes
// through the sections in turn with the same arithmetic as a pass of each section over the
// whole run, so the results are those of IirFilter::Apply to the last bit, while the samples
// are read, converted and written once.
class SectionStream {
public:
    explicit SectionStream(const IirFilter& f) : sections_(f.sections) {
        state_.assign(sections_.size(), {0.0, 0.0});
    }
    double Next(double x) {
        for (std::size_t k = 0; k < sections_.size(); ++k) {
            const Biquad& q = sections_[k];
            auto& st = state_[k];
            const double in = x;
            const double y = q.b0 * in + st[0];
            st[0] = q.b1 * in - q.a1 * y + st[1];
            st[1] = q.b2 * in - q.a2 * y;
            x = y;
        }
        return x;
    }

private:
    std::vector<Biquad> sections_;
    std::vector<std::array<double, 2>> state_;
};

// Four sections, the order of every filter of the list, unrolled.
template <std::size_t N>
struct FixedStream {
    std::array<Biquad, N> q;
    std::array<double, 2 * N> st{};
    double Next(double x) { return CascadePoint(q, st, x); }
};

// Sets point i of a buffer that holds fewer points than its screen: a filtered value that is
// not 0 extends the buffer (with zeros up to it), as the zero-filled buffer would show it.
void PutBeyondHeld(std::vector<std::int16_t>& b, std::size_t i, std::size_t points,
                   std::size_t stride, std::size_t ch, std::int16_t v) {
    if (v == 0) return;
    if (b.size() < (i + 1) * stride)
        b.resize(std::min(points, std::max(i + 1, 2 * (b.size() / stride))) * stride, 0);
    b[i * stride + ch] = v;
}

// One run over the active channel of previous, current and next, a point at a time. The points
// past what a buffer holds read as 0 going in.
template <typename Stream>
void RunOverScreens(Recording& rec, Stream& stream) {
    const std::size_t points = std::size_t(rec.ScreenPoints());
    const std::size_t stride = std::size_t(rec.Stride());
    const std::size_t ch = rec.ChannelIndex;
    for (std::vector<std::int16_t>* b : {&rec.PreviousScreen, &rec.CurrentScreen, &rec.NextScreen}) {
        std::int16_t* data = b->data();
        const std::size_t held = b->size() / stride;
        std::size_t i = 0;
        for (; i < held; ++i) {
            // A value beyond 16 bits leaves the sample as it was.
            if (auto v = ToInt16(stream.Next(data[i * stride + ch]))) data[i * stride + ch] = *v;
        }
        for (; i < points; ++i)
            if (const auto v = ToInt16(stream.Next(0.0))) PutBeyondHeld(*b, i, points, stride, ch, *v);
    }
}

// The same run through the vector unit's lanes. False, with the buffers untouched, where the
// lanes leave the run to the one-pass filter.
bool RunInLanes(Recording& rec, DesignCache& cache) {
    const std::size_t points = std::size_t(rec.ScreenPoints());
    const std::size_t stride = std::size_t(rec.Stride());
    const std::size_t ch = rec.ChannelIndex;
    const std::array<std::vector<std::int16_t>*, 3> buffers = {
        &rec.PreviousScreen, &rec.CurrentScreen, &rec.NextScreen};
    for (const auto* b : buffers)
        if (b->size() / stride > points) return false;
    if (cache.lanesRun != 3 * points) {
        cache.lanesRun = 3 * points;
        cache.lanes = LaneFilter::Make(*cache.filter, 3 * points);
    }
    if (!cache.lanes) return false;

    cache.run.assign(3 * points, 0);
    for (std::size_t k = 0; k < 3; ++k) {
        const std::int16_t* data = buffers[k]->data();
        const std::size_t held = buffers[k]->size() / stride;
        std::int16_t* to = cache.run.data() + k * points;
        if (stride == 1)
            std::copy(data, data + held, to);
        else
            for (std::size_t i = 0; i < held; ++i) to[i] = data[i * stride + ch];
    }
    cache.filtered.resize(3 * points);
    if (!cache.lanes->Run(cache.run, cache.filtered)) return false;

    for (std::size_t k = 0; k < 3; ++k) {
        std::vector<std::int16_t>& b = *buffers[k];
        const std::int16_t* from = cache.filtered.data() + k * points;
        const std::size_t held = b.size() / stride;
        if (stride == 1)
            std::copy(from, from + held, b.data());
        else
            for (std::size_t i = 0; i < held; ++i) b[i * stride + ch] = from[i];
        for (std::size_t i = held; i < points; ++i) PutBeyondHeld(b, i, points, stride, ch, from[i]);
    }
    return true;
}

void FilterScreens(Session& s, UserDialogs& ui, DesignCache& cache) {
    Recording& rec = s.recording;
    if (std::size_t(rec.ChannelIndex) >= std::size_t(rec.Stride())) return;

    const double fs = SamplingFrequency(rec);
    const double fc = Val(s.options.FilterFreq);
    if (auto text = CutoffMessage(fc, fs)) ui.Message("Digital Filter", *text);
    if (cache.type != s.options.FilterType || cache.fs != fs || cache.fc != fc) {
        cache.type = s.options.FilterType;
        cache.fs = fs;
        cache.fc = fc;
        cache.filter = DesignDigitalFilter(s.options.FilterType, fs, fc);
        cache.lanes.reset();
        cache.lanesRun = 0;
    }
    if (!cache.filter) return;  // the buffers stay as read

    // One run over previous, current and next: the screen shown has a screen of run-in
    // before it.
    if (cache.useLanes && RunInLanes(rec, cache)) return;
    if (cache.filter->sections.size() == 4) {
        FixedStream<4> stream;
        std::copy(cache.filter->sections.begin(), cache.filter->sections.end(), stream.q.begin());
        RunOverScreens(rec, stream);
    } else {
        SectionStream stream(*cache.filter);
        RunOverScreens(rec, stream);
    }
}

}  // namespace

void DigitalFilter(Session& s, UserDialogs& ui) {
    // A single run: the lanes' plan and trial would cost more than they save.
    DesignCache cache;
    cache.useLanes = false;
    FilterScreens(s, ui, cache);
}

void InstallDigitalFilter(Session& s, UserDialogs& ui) {
    UserDialogs* dialogs = &ui;
    auto cache = std::make_shared<DesignCache>();
    s.screenFilter = [dialogs, cache](Session& session) { FilterScreens(session, *dialogs, *cache); };
}

std::string FilterHelpText() {
    return "Digital filter: with \"Filter\" checked, every redraw filters the active channel of "
           "the screen shown, together with the screens before and after it, and the detection "
           "works on the filtered samples.  The file is never changed.\n"
           "All eight types are IIR filters of order 8, run forward only (causal), so the "
           "filtered trace lags the original a little.\n"
           "Butterworth: the cut-off is the -3 dB point.\n"
           "Chebychev: 0.5 dB ripple in the pass band, which ends at the cut-off.\n"
           "Inv Chebychev: flat pass band; the stop band, at least 60 dB down, begins at the "
           "cut-off, so the -3 dB point lies at about 0.7 (low-pass) or 1.5 (high-pass) times "
           "the cut-off.\n"
           "Elliptic: 0.5 dB ripple in the pass band, which ends at the cut-off, and at least "
           "60 dB attenuation from a fifth of the cut-off beyond it.\n"
           "The cut-off must lie above 0 and below half the sampling frequency; otherwise the "
           "trace is shown and analysed unfiltered.";
}

namespace {

template <typename T>
std::vector<T> Gaussian(std::span<const T> data, double fc) {
    std::vector<T> out(data.begin(), data.end());
    if (!(fc > 0) || data.empty()) return out;
    const std::int64_t n = std::int64_t(data.size());
    // The response exp(-2 pi^2 sigma^2 f^2) is 1/sqrt(2) at f = fc. A cut-off so low that
    // sigma overflows is taken as the widest finite bell.
    const double sigma =
        std::min(std::sqrt(std::log(2.0)) / (2 * std::numbers::pi) / fc, 1e300);
    std::vector<double> a;
    std::int64_t nc;
    if (sigma < 0.62) {
        // Too narrow to sample the bell: a three-point filter of the same variance.
        const double w = sigma * sigma / 2;
        a = {w, 1 - 2 * w, w};
        nc = 1;
    } else {
        // The bell is cut at 4 sigma. Taps n or more away from a point only ever see the end
        // values, so a bell wider than the data is cut at n with the weight of its tails on
        // the outermost taps: a very low cut-off costs no more than the data's length.
        const double half = std::floor(4 * sigma);
        nc = half < double(n) ? std::int64_t(half) : n;
        a.resize(std::size_t(2 * nc + 1));
        double sum = 0;
        for (std::int64_t k = -nc; k <= nc; ++k) {
            const double v = std::exp(-double(k * k) / (2 * sigma * sigma));
            a[std::size_t(k + nc)] = v;
            sum += v;
        }
        if (half > double(nc)) {
            // The taps nc+1 .. half of each tail, summed as the integral of the bell.
            const double r = sigma * std::numbers::sqrt2;
            const double tail = sigma * std::sqrt(std::numbers::pi / 2) *
                                (std::erf((half + 0.5) / r) - std::erf((double(nc) + 0.5) / r));
            a.front() += tail;
            a.back() += tail;
            sum += 2 * tail;
        }
        for (double& v : a) v /= sum;
    }
    for (std::int64_t i = 0; i < n; ++i) {
        double acc = 0;
        for (std::int64_t k = -nc; k <= nc; ++k)
            acc += a[std::size_t(k + nc)] *
                   double(data[std::size_t(std::clamp<std::int64_t>(i + k, 0, n - 1))]);
        out[std::size_t(i)] = T(acc);
    }
    return out;
}

}  // namespace

std::vector<double> GaussianFilter(std::span<const double> data, double cutoffFraction) {
    return Gaussian(data, cutoffFraction);
}

std::vector<float> GaussianFilter(std::span<const float> data, double cutoffFraction) {
    return Gaussian(data, cutoffFraction);
}

}  // namespace ardel
