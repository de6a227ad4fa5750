#include "frame_pipeline.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace cycbcr_tool {
namespace {

uint64_t run_on_this_thread(const FrameLoop& loop) {
    Converter& converter = *loop.converter;
    const PitchedFrame& src = *loop.source;
    const PitchedFrame& dst = *loop.destination;
    std::vector<uint8_t> file_in(src.padded() ? src.file_bytes() : 0);
    std::vector<uint8_t> file_out(dst.padded() ? dst.file_bytes() : 0);
    uint64_t frames = 0;
    while (loop.max_frames == 0 || frames < loop.max_frames) {
        if (!loop.reader->read(src.padded() ? std::span<uint8_t>(file_in) : converter.source())) {
            break;
        }
        if (src.padded()) src.unpack(file_in.data(), converter.source().data());
        const std::span<const uint8_t> out = converter.convert();
        if (dst.padded()) {
            dst.pack(out.data(), file_out.data());
            loop.sink(file_out);
        } else {
            loop.sink(out);
        }
        loop.frame_done(++frames);
    }
    return frames;
}

// One frame in flight: read into (free -> read), converted by a worker
// (read -> converted), handed to the sink and freed again.
struct Slot {
    enum class State { Free, Read, Converted };
    Converter* converter = nullptr;
    std::unique_ptr<Converter> owned;
    std::vector<uint8_t> file_in, file_out;
    std::span<const uint8_t> result;
    State state = State::Free;
    uint64_t frame = 0;
};

class Ring {
  public:
    explicit Ring(const FrameLoop& loop) : loop_(loop) {
        size_t count = loop.threads + 1;
        if (loop.max_frames != 0) count = std::min<uint64_t>(count, loop.max_frames);
        slots_.resize(count);
        for (size_t i = 0; i < count; ++i) {
            Slot& s = slots_[i];
            if (i == 0) {
                s.converter = loop.converter;
            } else {
                s.owned = loop.make_converter();
                s.converter = s.owned.get();
            }
            if (loop.source->padded()) s.file_in.resize(loop.source->file_bytes());
            if (loop.destination->padded()) s.file_out.resize(loop.destination->file_bytes());
        }
    }

    uint64_t run() {
        std::vector<std::thread> workers;
        std::thread writer;
        try {
            for (unsigned int i = 0; i < loop_.threads; ++i)
                workers.emplace_back([this] { work(); });
            writer = std::thread([this] { write(); });
        } catch (...) {
            fail(std::current_exception());
        }
        read();
        for (std::thread& t : workers) t.join();
        if (writer.joinable()) writer.join();
        if (error_) std::rethrow_exception(error_);
        return written_;
    }

  private:
    void fail(std::exception_ptr e) {
        const std::lock_guard lock(mutex_);
        if (!error_) error_ = e;
        wake_.notify_all();
    }

    void read() {
        try {
            for (uint64_t n = 0; loop_.max_frames == 0 || n < loop_.max_frames; ++n) {
                Slot& s = slots_[n % slots_.size()];
                {
                    std::unique_lock lock(mutex_);
                    wake_.wait(lock, [&] { return error_ || s.state == Slot::State::Free; });
                    if (error_) break;
                }
                const std::span<uint8_t> into =
                    loop_.source->padded() ? std::span<uint8_t>(s.file_in) : s.converter->source();
                if (!loop_.reader->read(into)) break;
                const std::lock_guard lock(mutex_);
                s.state = Slot::State::Read;
                s.frame = n;
                queue_.push_back(&s);
                frames_read_ = n + 1;
                wake_.notify_all();
            }
        } catch (...) {
            fail(std::current_exception());
        }
        const std::lock_guard lock(mutex_);
        input_done_ = true;
        wake_.notify_all();
    }

    void work() {
        try {
            for (;;) {
                Slot* s = nullptr;
                {
                    std::unique_lock lock(mutex_);
                    wake_.wait(lock, [&] { return error_ || !queue_.empty() || input_done_; });
                    if (error_ || queue_.empty()) return;
                    s = queue_.front();
                    queue_.pop_front();
                }
                Converter& c = *s->converter;
                if (loop_.source->padded())
                    loop_.source->unpack(s->file_in.data(), c.source().data());
                s->result = c.convert();
                if (loop_.destination->padded()) {
                    loop_.destination->pack(s->result.data(), s->file_out.data());
                    s->result = s->file_out;
                }
                const std::lock_guard lock(mutex_);
                s->state = Slot::State::Converted;
                wake_.notify_all();
            }
        } catch (...) {
            fail(std::current_exception());
        }
    }

    void write() {
        try {
            for (uint64_t n = 0;; ++n) {
                Slot& s = slots_[n % slots_.size()];
                {
                    std::unique_lock lock(mutex_);
                    wake_.wait(lock, [&] {
                        return error_ || (s.state == Slot::State::Converted && s.frame == n) ||
                               (input_done_ && n == frames_read_);
                    });
                    if (error_ || s.state != Slot::State::Converted || s.frame != n) return;
                }
                loop_.sink(s.result);
                written_ = n + 1;
                loop_.frame_done(written_);
                const std::lock_guard lock(mutex_);
                s.state = Slot::State::Free;
                wake_.notify_all();
            }
        } catch (...) {
            fail(std::current_exception());
        }
    }

    const FrameLoop& loop_;
    std::vector<Slot> slots_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Slot*> queue_;
    std::exception_ptr error_;
    bool input_done_ = false;
    uint64_t frames_read_ = 0;
    uint64_t written_ = 0;  // by the writer only; read after it is joined
};

}  // namespace

uint64_t run_frame_loop(const FrameLoop& loop) {
    uint64_t to_do = loop.reader->known_frames();
    if (loop.max_frames != 0 && (to_do == 0 || loop.max_frames < to_do)) to_do = loop.max_frames;
    if (loop.threads <= 1 || to_do == 1) return run_on_this_thread(loop);
    FrameLoop ring_loop = loop;
    if (to_do != 0)
        ring_loop.threads = static_cast<unsigned int>(std::min<uint64_t>(loop.threads, to_do));
    Ring ring(ring_loop);
    return ring.run();
}

}  // namespace cycbcr_tool
