// The C interface to main queues of the host's.
#include "bindings/c/Handles.h"

using namespace lirvox;
using namespace lirvox::c;

void lirvox_task_run(lirvox_task* task) {
  if (!task) return;
  // What a task throws is logged by the task itself.
  guarded([&] { task->task(); });
  delete task;
}

void lirvox_task_discard(lirvox_task* task) {
  delete task;
}

lirvox_status lirvox_platform_set_executor(lirvox_platform* platform, lirvox_executor executor,
                                           void* context, lirvox_release release) {
  return guarded([&] {
    Context owned = makeContext(context, release);
    required(executor, "executor");
    auto& mainQueue = platformOf(platform).mainQueue;
    mainQueue = std::make_shared<platform::ExecutorTaskQueue>(
        [executor, owned = std::move(owned)](platform::Task task) {
          executor(owned.get(), new lirvox_task{std::move(task)});
        },
        mainQueue);
  });
}

lirvox_pump* lirvox_platform_use_pump(lirvox_platform* platform) {
  return guarded<lirvox_pump*>(nullptr, [&] {
    auto& mainQueue = platformOf(platform).mainQueue;
    auto pump = std::make_unique<lirvox_pump>();
    pump->queue = std::make_shared<platform::PumpedTaskQueue>(mainQueue);
    mainQueue = pump->queue;
    return pump.release();
  });
}

size_t lirvox_pump_run(lirvox_pump* pump) {
  return guarded(std::size_t{0}, [&] { return required(pump, "pump")->queue->pump(); });
}

void lirvox_pump_free(lirvox_pump* pump) {
  delete pump;
}
