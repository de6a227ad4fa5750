// cycbcr_bench: throughput of the converters against memcpy and peer libraries.
//
// Build and run everything, with the summary tables at the end:
//     bench/run.sh
// or, in a configured build directory:
//     ninja -j2 cycbcr_bench && ./bench/cycbcr_bench
//
// Every converter of a pair of formats in the library's list (frame/converters.h)
// is timed, once per function (a second name of the same code is left out), at
// 1920x1080 and 3840x2160, at level 0 ("plain") and at level 5, and set against
// memcpy of the same number of bytes. AVX2 forms that no pair's converter takes
// at level 5 are timed at level 5 alone. The summary groups them by family:
//   - byte orders: both frames packed 4:2:2, the v210 copy, and the interleaved
//     copy and in-place inversion, beside libyuv;
//   - v210: v210 on one side, beside FFmpeg's v210 encoder and decoder, with the
//     share of FFmpeg's time that is codec-API overhead rather than packing;
//   - packed 4:2:2 <-> planar I420 / YV12 / P422, beside libyuv where it has the
//     pair;
//   - planar copies among I420, YV12 and P422;
//   - YCbCr -> RGB: every converter of the RGB list (kRgbConverterRows) with
//     matrix 0 and RGB type 0 (B, G, R, A), its _avx2 forms at level 5 too,
//     beside libyuv's conversion of the same source (its pixels checked to
//     within a few units of ours, since it rounds its own way).
// Frames are at their natural pitches and counted whole. The program refuses to
// run when a listed converter falls in no family or in two, or would reach past
// the shared buffers. The L5/pl column is level 5 over the plain level.
//
// Unless given on the command line, each benchmark runs 7 repetitions of at
// least 0.1 s of CPU time (the RGB family 0.05 s, whatever the command line
// says), the repetitions of all benchmarks interleaved in random order, and the
// summary takes the median: on a shared machine a burst of noise then lands on
// one repetition of several benchmarks rather than on every repetition of one.
// The cv% column gives the spread of the repetitions. The whole suite, some 440
// benchmarks, takes about seven minutes on two cores, the RGB family about
// a minute and a half of it.
//
// Any Google Benchmark flag can be added. Quicker runs:
//     --benchmark_filter=3840x2160        one frame size (FFmpeg's per-call
//                                         figures need the 48x4 benchmarks too)
//     --benchmark_filter='v210|012v'      the v210 family with all of FFmpeg's
//     --benchmark_filter='rgb|RGB|memcpy' the RGB family with libyuv and memcpy
//     --benchmark_repetitions=3           fewer repetitions, noisier medians
// and --benchmark_out=run.json --benchmark_out_format=json keeps every repetition.
//
// Google Benchmark may warn that it "was built as DEBUG": that is the benchmark
// library's own build (as packaged), not this library's.
//
// Throughput is bytes read plus bytes written per second, counted as whole
// frames: a conversion counts its source frame plus its destination frame, and
// the memcpy it is set against copies half that many bytes. Peers count their
// own frames the same way.
#include <cycbcr.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "bench_support.h"

namespace cycbcr_bench {
namespace {

struct Result {
    double bytes_per_second = 0;
    double items_per_second = 0;
    double cv = 0;  // spread of the repetitions: standard deviation / mean
    std::string error;
};

// The console output as usual, plus the medians kept for the summary.
class SummaryReporter : public benchmark::ConsoleReporter, public Medians {
  public:
    using ConsoleReporter::ConsoleReporter;

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            const bool cv = run.run_type == Run::RT_Aggregate && run.aggregate_name == "cv";
            const bool single = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
            Result& r = results_[run.run_name.function_name];
            if (run.error_occurred) {
                r.error = run.error_message;
                continue;
            }
            auto bytes = run.counters.find("bytes_per_second");
            auto items = run.counters.find("items_per_second");
            if (median || single) {
                if (bytes != run.counters.end()) r.bytes_per_second = bytes->second.value;
                if (items != run.counters.end()) r.items_per_second = items->second.value;
            }
            if (cv && bytes != run.counters.end()) r.cv = bytes->second.value;
            if (cv && bytes == run.counters.end() && items != run.counters.end())
                r.cv = items->second.value;
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        print_summary();
    }

    double bytes_per_second(const std::string& name) const override {
        const Result* r = find(name);
        return r == nullptr ? 0 : r->bytes_per_second;
    }
    double items_per_second(const std::string& name) const override {
        const Result* r = find(name);
        return r == nullptr ? 0 : r->items_per_second;
    }
    double spread(const std::string& name) const override {
        auto it = results_.find(name);
        return it == results_.end() ? 0 : it->second.cv;
    }

  private:
    // Nothing for a benchmark that did not run or was skipped.
    const Result* find(const std::string& name) const {
        if (name.empty()) return nullptr;
        auto it = results_.find(name);
        return it == results_.end() || !it->second.error.empty() ? nullptr : &it->second;
    }

    void print_summary() {
        std::FILE* out = stdout;
        std::fflush(out);
        // Other work on the machine shows up as spread between repetitions; the
        // load average says how busy it was while these numbers were taken.
        double load[3] = {0, 0, 0};
        getloadavg(load, 3);
        std::fprintf(out,
                     "\nSummary: median GB/s of bytes read + written (1 GB = 1e9 bytes); "
                     "ratios are ours / reference.\nAVX2 %s. "
                     "Load average (1, 5, 15 min) at the end of the run: %.2f %.2f %.2f\n",
                     avx2_usable() ? "usable" : "NOT usable (level 5 skipped)", load[0], load[1],
                     load[2]);
        // The converter column as wide as the longest name, 18 at least.
        int name_width = 18;
        for (const SummaryRow& row : summary_rows())
            name_width = std::max(name_width, static_cast<int>(row.converter.size()));
        std::string family;
        bool first = true;
        for (const SummaryRow& row : summary_rows()) {
            const double plain = bytes_per_second(row.plain), l5 = bytes_per_second(row.level5);
            const double mc = bytes_per_second(row.memcpy);
            double peer = bytes_per_second(row.peer);
            if (row.peer_per_frame && peer != 0) {
                const std::string& ours = l5 != 0 ? row.level5 : row.plain;
                const double frames = items_per_second(ours);
                peer =
                    frames == 0 ? 0 : items_per_second(row.peer) * bytes_per_second(ours) / frames;
            }
            if (plain == 0 && l5 == 0) continue;  // filtered out or skipped
            if (first || row.family != family) {
                family = row.family;
                first = false;
                std::fprintf(out, "\n%s\n", family_heading(family).c_str());
                std::fprintf(
                    out, "%-10s %-*s %7s %7s %7s %7s  %7s %7s %7s %7s %6s  %5s  %-24s %s\n", "size",
                    name_width, "converter", "plain", "level5", "memcpy", "peer", "pl/mcpy",
                    "L5/mcpy", "pl/peer", "L5/peer", "L5/pl", "cv%", "peer", "level 5 target");
            }
            // The largest spread among the benchmarks of the row.
            double cv = 0;
            for (const std::string* name : {&row.plain, &row.level5, &row.memcpy, &row.peer})
                cv = std::max(cv, spread(*name));
            std::fprintf(out, "%-10s %-*s %7s %7s %7s %7s  %7s %7s %7s %7s %6s  %5.1f  %-24s %s\n",
                         row.size.c_str(), name_width, row.converter.c_str(), gbps(plain).c_str(),
                         gbps(l5).c_str(), gbps(mc).c_str(), gbps(peer).c_str(),
                         ratio(plain, mc).c_str(), ratio(l5, mc).c_str(),
                         ratio(plain, peer).c_str(), ratio(l5, peer).c_str(),
                         ratio(l5, plain).c_str(), 100 * cv,
                         row.peer_label.empty() ? "-" : row.peer_label.c_str(),
                         verdict(row, l5, mc, peer, plain, cv).c_str());
        }
        for (const SummaryNote& note : summary_notes()) note(out, *this);
        bool skipped = false;
        for (const auto& [name, r] : results_) {
            if (r.error.empty()) continue;
            if (!skipped) std::fprintf(out, "\n");
            skipped = true;
            std::fprintf(out, "skipped %s: %s\n", name.c_str(), r.error.c_str());
        }
        std::fflush(out);
    }

    static std::string gbps(double v) {
        if (v == 0) return "-";
        char buf[32];
        std::snprintf(buf, sizeof buf, "%.2f", v / 1e9);
        return buf;
    }

    static std::string ratio(double a, double b) {
        if (a == 0 || b == 0) return "-";
        char buf[32];
        std::snprintf(buf, sizeof buf, "%.2f", a / b);
        return buf;
    }

    // A shortfall smaller than the spread of the row's repetitions is reported
    // as within noise rather than as a miss: another run may well meet it.
    static std::string verdict(const SummaryRow& row, double l5, double mc, double peer,
                               double plain, double cv) {
        if (!row.level5_form && !row.judge_without_form) return "n/a (no AVX2 form)";
        if (row.memcpy_target == 0 && row.peer_target == 0 && row.plain_target == 0) return "-";
        if (l5 == 0) return "not measured";
        std::string missed, close, absent;
        auto judge = [&](const char* what, double reached, double wanted) {
            if (reached >= wanted) return;
            std::string& list = reached >= wanted * (1 - cv) ? close : missed;
            list += list.empty() ? what : std::string("+") + what;
        };
        if (row.memcpy_target != 0) {
            if (mc != 0)
                judge("memcpy", l5, row.memcpy_target * mc);
            else
                absent = "memcpy";
        }
        if (row.peer_target != 0 && !row.peer.empty()) {
            if (peer != 0)
                judge("peer", l5, row.peer_target * peer);
            else
                absent += absent.empty() ? "peer" : "+peer";
        }
        if (row.plain_target != 0) {
            if (plain != 0)
                judge("plain", l5, row.plain_target * plain);
            else
                absent += absent.empty() ? "plain" : "+plain";
        }
        std::string v = !missed.empty()  ? "MISSED (" + missed + ")"
                        : !close.empty() ? "within noise (" + close + ")"
                                         : "met";
        if (!absent.empty()) v += ", " + absent + " not run";
        return v;
    }

    std::map<std::string, Result> results_;
};

}  // namespace
}  // namespace cycbcr_bench

int main(int argc, char** argv) {
    // Defaults first: a flag given on the command line comes later and wins.
    static char repetitions[] = "--benchmark_repetitions=7";
    static char min_time[] = "--benchmark_min_time=0.1";
    static char interleave[] = "--benchmark_enable_random_interleaving=true";
    static char aggregates[] = "--benchmark_display_aggregates_only=true";
    std::vector<char*> args{argv[0], repetitions, min_time, interleave, aggregates};
    args.insert(args.end(), argv + 1, argv + argc);
    int count = static_cast<int>(args.size());
    benchmark::Initialize(&count, args.data());
    if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 1;

    cycbcr_bench::register_byte_order_benchmarks();
    cycbcr_bench::register_v210_benchmarks();
    cycbcr_bench::register_packed_planar_benchmarks();
    cycbcr_bench::register_planar_copy_benchmarks();
    cycbcr_bench::register_to_rgb_benchmarks();
    cycbcr_bench::register_v210_to_rgb_benchmarks();
    cycbcr_bench::register_from_rgb_benchmarks();
    cycbcr_bench::register_semi_planar_benchmarks();
    cycbcr_bench::register_planar16_v210_benchmarks();
    cycbcr_bench::register_hbd_planar_benchmarks();
    cycbcr_bench::register_rgb_to_planar16_benchmarks();
    cycbcr_bench::register_hbd_to_rgb_benchmarks();
    cycbcr_bench::register_to_rgb_planar_benchmarks();
    cycbcr_bench::register_scale_benchmarks();
    const std::vector<std::string> unclaimed = cycbcr_bench::unclaimed_converters();
    for (const std::string& name : unclaimed)
        std::fprintf(stderr, "cycbcr_bench: listed converter %s\n", name.c_str());
    if (!unclaimed.empty()) return 1;

    cycbcr_bench::SummaryReporter reporter(isatty(STDOUT_FILENO)
                                               ? benchmark::ConsoleReporter::OO_Defaults
                                               : benchmark::ConsoleReporter::OO_Tabular);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
