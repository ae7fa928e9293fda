// A PulseAudio server of the test's own, with null sinks and no hardware.
#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Tune.h"

namespace lirvox::test {

class PulseServer {
 public:
  static bool isInstalled() {
    return std::system("command -v pulseaudio pactl paplay >/dev/null 2>&1") == 0;
  }

  PulseServer() {
    std::string name = std::filesystem::temp_directory_path() / "lirvox-pulse-XXXXXX";
    folder_ = ::mkdtemp(name.data());
    server_ = spawn(
        "pulseaudio -n --daemonize=no --use-pid-file=no --exit-idle-time=-1 -L "
        "'module-native-protocol-unix auth-anonymous=1 socket=" +
        folder_ +
        "/native' "
        "-L 'module-null-sink sink_name=one' -L 'module-null-sink sink_name=two'");
    for (int i = 0; i < 200 && !control("set-default-source one.monitor"); ++i) ::usleep(50000);
  }

  ~PulseServer() {
    for (const pid_t player : players_) end(player, SIGKILL);
    kill();
    std::filesystem::remove_all(folder_);
  }
  PulseServer(const PulseServer&) = delete;
  PulseServer& operator=(const PulseServer&) = delete;

  std::string address() const { return "unix:" + folder_ + "/native"; }

  bool control(const std::string& command) const {
    const std::string line = "PULSE_SERVER=" + address() + " pactl " + command + " >/dev/null 2>&1";
    return std::system(line.c_str()) == 0;
  }

  // One of the two with which the server starts.
  bool removeSink(const std::string& sink) const {
    return control(sink == "one" ? "unload-module 1" : "unload-module 2");
  }

  // Plays samples as `writeWav` takes them into a sink, until they or the server end.
  void play(const std::string& sink, const std::vector<std::int32_t>& samples) {
    const std::string file = folder_ + "/" + sink + ".wav";
    writeWav(file, samples);
    players_.push_back(spawn("paplay --server=" + address() + " --device=" + sink + " " + file));
  }
  bool playSine(const std::string& sink, int frequency) const {
    return control("load-module module-sine sink=" + sink +
                   " frequency=" + std::to_string(frequency));
  }

  void freeze() { ::kill(server_, SIGSTOP); }
  void kill() { end(std::exchange(server_, 0), SIGKILL); }

 private:
  pid_t spawn(const std::string& program) {
    const std::string command = "export HOME=" + folder_ + " XDG_RUNTIME_DIR=" + folder_ +
                                " XDG_CONFIG_HOME=" + folder_ + "; exec " + program +
                                " </dev/null >/dev/null 2>&1";
    const pid_t child = ::fork();
    if (child != 0) return child;
    ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    ::_exit(127);
  }

  static void end(pid_t child, int signal) {
    if (child <= 0) return;
    ::kill(child, signal);
    ::waitpid(child, nullptr, 0);
  }

  std::string folder_;
  pid_t server_ = 0;
  std::vector<pid_t> players_;
};

}  // namespace lirvox::test
