// cycbcr_bench: throughput of the converters against memcpy and peer libraries.
//
// Build and run everything, with the summary table at the end:
//     bench/run.sh
// or, in a configured build directory:
//     ninja -j2 cycbcr_bench && ./bench/cycbcr_bench
//
// Unless given on the command line, each benchmark runs 7 repetitions of at
// least 0.1 s of CPU time, the repetitions of all benchmarks interleaved in
// random order, and the summary takes the median: on a shared machine a burst of
// noise then lands on one repetition of several benchmarks rather than on every
// repetition of one. The cv% column gives the spread of the repetitions.
// Any Google Benchmark flag can be added, for example --benchmark_filter=1920x1080,
// or --benchmark_out=run.json --benchmark_out_format=json to keep every repetition.
//
// Google Benchmark may warn that it "was built as DEBUG": that is the benchmark
// library's own build (as packaged), not this library's.
//
// Throughput is bytes read plus bytes written per second: a conversion of one
// packed frame counts two frames, and so does the memcpy it is set against.
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

// What level 5 has to reach: this share of memcpy's throughput, and at least
// the peer's where a peer does the same work.
constexpr double kMemcpyTarget = 0.90;
constexpr double kPeerTarget = 1.00;

struct Result {
    double bytes_per_second = 0;
    double cv = 0;  // spread of the repetitions: standard deviation / mean
    std::string error;
};

// The console output as usual, plus the medians kept for the summary.
class SummaryReporter : public benchmark::ConsoleReporter {
  public:
    using ConsoleReporter::ConsoleReporter;

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            const bool cv = run.run_type == Run::RT_Aggregate && run.aggregate_name == "cv";
            const bool single = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
            Result& r = results_[run.run_name.function_name];
            auto it = run.counters.find("bytes_per_second");
            if (run.error_occurred) {
                r.error = run.error_message;
            } else if (it != run.counters.end()) {
                if (median || single) r.bytes_per_second = it->second.value;
                if (cv) r.cv = it->second.value;
            }
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        print_summary();
    }

  private:
    // Median bytes/s, 0 when the benchmark did not run or was skipped.
    double rate(const std::string& name) const {
        if (name.empty()) return 0;
        auto it = results_.find(name);
        return it == results_.end() || !it->second.error.empty() ? 0 : it->second.bytes_per_second;
    }

    double spread(const std::string& name) const {
        auto it = results_.find(name);
        return it == results_.end() ? 0 : it->second.cv;
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
                     "ratios are ours / reference.\nAVX2 %s; target for level 5 when it runs an "
                     "AVX2 form: >= %.0f%% of memcpy and >= %.0f%% of libyuv.\n"
                     "Load average (1, 5, 15 min) at the end of the run: %.2f %.2f %.2f\n\n",
                     avx2_usable() ? "usable" : "NOT usable (level 5 skipped)", 100 * kMemcpyTarget,
                     100 * kPeerTarget, load[0], load[1], load[2]);
        std::fprintf(out, "%-10s %-18s %7s %7s %7s %7s  %7s %7s %7s %7s  %5s  %-24s %s\n", "size",
                     "converter", "plain", "level5", "memcpy", "libyuv", "pl/mcpy", "L5/mcpy",
                     "pl/yuv", "L5/yuv", "cv%", "libyuv peer", "level 5 target");
        for (const SummaryRow& row : summary_rows()) {
            const double plain = rate(row.plain), l5 = rate(row.level5);
            const double mc = rate(row.memcpy), peer = rate(row.peer);
            if (plain == 0 && l5 == 0) continue;  // filtered out or skipped
            // The largest spread among the benchmarks of the row.
            double cv = 0;
            for (const std::string* name : {&row.plain, &row.level5, &row.memcpy, &row.peer})
                cv = std::max(cv, spread(*name));
            std::fprintf(out, "%-10s %-18s %7s %7s %7s %7s  %7s %7s %7s %7s  %5.1f  %-24s %s\n",
                         row.size.c_str(), row.converter.c_str(), gbps(plain).c_str(),
                         gbps(l5).c_str(), gbps(mc).c_str(), gbps(peer).c_str(),
                         ratio(plain, mc).c_str(), ratio(l5, mc).c_str(),
                         ratio(plain, peer).c_str(), ratio(l5, peer).c_str(), 100 * cv,
                         row.peer_label.empty() ? "-" : row.peer_label.c_str(),
                         verdict(row, l5, mc, peer, cv).c_str());
        }
        for (const auto& [name, r] : results_)
            if (!r.error.empty())
                std::fprintf(out, "skipped %s: %s\n", name.c_str(), r.error.c_str());
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
                               double cv) {
        if (!row.level5_form) return "n/a (no AVX2 form)";
        if (l5 == 0 || mc == 0) return "not measured";
        std::string missed, close;
        auto judge = [&](const char* what, double reached, double wanted) {
            if (reached >= wanted) return;
            std::string& list = reached >= wanted * (1 - cv) ? close : missed;
            list += list.empty() ? what : std::string("+") + what;
        };
        judge("memcpy", l5, kMemcpyTarget * mc);
        if (peer != 0) judge("libyuv", l5, kPeerTarget * peer);
        std::string v = !missed.empty()  ? "MISSED (" + missed + ")"
                        : !close.empty() ? "within noise (" + close + ")"
                                         : "met";
        if (!row.peer.empty() && peer == 0) v += ", libyuv not run";
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

    cycbcr_bench::register_memcpy_benchmarks();
    cycbcr_bench::register_byte_order_benchmarks();

    cycbcr_bench::SummaryReporter reporter(isatty(STDOUT_FILENO)
                                               ? benchmark::ConsoleReporter::OO_Defaults
                                               : benchmark::ConsoleReporter::OO_Tabular);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
