// A program with a GLib main loop: the outcome arrives on its loop, among its other work.
#include <iostream>

#include <glib.h>
#include <lirvox/Lirvox.h>
#include <lirvox/LirvoxSettings.h>
#include <lirvox/platform/HostTaskQueues.h>
#include <lirvox/platform/Platform.h>

using lirvox::platform::Task;

// Called on any thread of the library's: the loop runs the task later, in order.
void runOnLoop(Task task) {
  const auto run = [](gpointer data) -> gboolean {
    (*static_cast<Task*>(data))();
    return G_SOURCE_REMOVE;
  };
  g_idle_add_full(G_PRIORITY_DEFAULT, run, new Task(std::move(task)),
                  [](gpointer data) { delete static_cast<Task*>(data); });
}

struct Printer : lirvox::LirvoxDelegate {
  explicit Printer(GMainLoop* runningLoop) : loop(runningLoop) {}
  void didRecognize(std::int32_t id, float position, float) override {
    std::cout << "track " << id << " at " << position << " s" << std::endl;
    g_main_loop_quit(loop);
  }
  void didNotRecognize() override {
    std::cout << "not recognized" << std::endl;
    g_main_loop_quit(loop);
  }
  GMainLoop* const loop;
};

int main() {
  auto platform = lirvox::platform::systemPlatform("lirvox");  // whose folders to use
  platform.mainQueue = std::make_shared<lirvox::platform::ExecutorTaskQueue>(
      runOnLoop, platform.mainQueue);  // which keeps the timers
  lirvox::platform::install(std::move(platform));

  const auto recognizer = lirvox::Lirvox::sharedInstance();
  lirvox::LirvoxError error;
  if (!recognizer->canRecognize(error)) {
    std::cerr << error.localizedDescription << std::endl;
    return 1;
  }
  recognizer->setDatabase(
      std::make_shared<lirvox::LirvoxDatabase>(lirvox::LirvoxSettings::databasePath()));

  GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
  recognizer->setDelegate(std::make_shared<Printer>(loop));
  recognizer->startRecognize();
  g_timeout_add_seconds(
      1,
      [](gpointer) -> gboolean {
        std::cout << "listening" << std::endl;
        return G_SOURCE_CONTINUE;
      },
      nullptr);
  g_main_loop_run(loop);

  // The recognizer outlives this function, and would keep the delegate.
  recognizer->setDelegate(nullptr);
  g_main_loop_unref(loop);
}
