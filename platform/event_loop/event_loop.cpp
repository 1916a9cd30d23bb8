// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "platform/event_loop/event_loop.h"

#include <system_error>
#include <utility>

#include "platform/event_loop/fatal_error.h"

namespace platform {

namespace {

void throwOnError(int result, const char* what) {
  if (result < 0) {
    throw std::system_error(-result, std::generic_category(), what);
  }
}

}  // namespace

struct EventLoop::Watch {
  uv_poll_t poll;
  Handler handler;
};

class EventLoop::UvTimer final : public Timer {
 public:
  UvTimer(uv_loop_t* loop, Handler whenExpired)
      : state(new State{.timer = {}, .handler = std::move(whenExpired)}) {
    uv_timer_init(loop, &state->timer);
    state->timer.data = state;
  }
  ~UvTimer() override {
    stop();
    uv_close(reinterpret_cast<uv_handle_t*>(&state->timer),
             [](uv_handle_t* handle) { delete static_cast<State*>(handle->data); });
  }

  void start(std::chrono::milliseconds delay) override {
    uv_update_time(state->timer.loop);
    uv_timer_start(
        &state->timer,
        [](uv_timer_t* timer) { guarded(static_cast<State*>(timer->data)->handler); },
        static_cast<std::uint64_t>(delay.count()), 0);
  }
  void stop() override { uv_timer_stop(&state->timer); }

 private:
  struct State {
    uv_timer_t timer;
    Handler handler;
  };
  State* state;
};

EventLoop::EventLoop() {
  throwOnError(uv_loop_init(&loop), "cannot create the event loop");
  uv_idle_init(&loop, &idle);
  idle.data = this;
}

EventLoop::~EventLoop() {
  while (!watches.empty()) {
    EventLoop::unwatch(watches.begin()->first);
  }
  uv_close(reinterpret_cast<uv_handle_t*>(&idle), nullptr);
  while (uv_loop_close(&loop) == UV_EBUSY) {
    uv_run(&loop, UV_RUN_NOWAIT);
  }
}

void EventLoop::watch(int fd, Interest interest, Handler handler) {
  if (!watches.contains(fd)) {
    auto added = std::make_unique<Watch>();
    throwOnError(uv_poll_init(&loop, &added->poll, fd), "cannot watch a descriptor");
    added->poll.data = added.get();
    watches[fd] = added.release();
  }
  Watch* watch = watches[fd];
  watch->handler = std::move(handler);
  uv_poll_start(&watch->poll, static_cast<int>(interest),
                [](uv_poll_t* poll, int /*status*/, int /*events*/) {
                  // A copy, since the handler may call watch() for its own descriptor.
                  guarded(Handler(static_cast<Watch*>(poll->data)->handler));
                });
}

void EventLoop::unwatch(int fd) {
  const auto known = watches.find(fd);
  if (known != watches.end()) {
    uv_close(reinterpret_cast<uv_handle_t*>(&known->second->poll),
             [](uv_handle_t* handle) { delete static_cast<Watch*>(handle->data); });
    watches.erase(known);
  }
}

std::unique_ptr<Timer> EventLoop::makeTimer(Handler handler) {
  return std::make_unique<UvTimer>(&loop, std::move(handler));
}

void EventLoop::post(Handler task) {
  tasks.push_back(std::move(task));
  uv_idle_start(&idle,
                [](uv_idle_t* handle) { static_cast<EventLoop*>(handle->data)->runTasks(); });
}

void EventLoop::runTasks() {
  uv_idle_stop(&idle);
  for (const Handler& task : std::exchange(tasks, {})) {
    guarded(task);
  }
}

int EventLoop::timeoutMs() const {
  // libuv's answer is 0 for a loop that has nothing to wait for.
  return uv_loop_alive(&loop) != 0 ? uv_backend_timeout(&loop) : -1;
}

}  // namespace platform
