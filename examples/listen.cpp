// The program of the README: what does the microphone hear?
#include <chrono>
#include <iostream>
#include <thread>

#include <lirvox/Lirvox.h>
#include <lirvox/LirvoxSettings.h>
#include <lirvox/platform/Platform.h>

struct Printer : lirvox::LirvoxDelegate {
  void didRecognize(std::int32_t id, float position, float) override {
    std::cout << "track " << id << " at " << position << " s" << std::endl;
  }
  void didNotRecognize() override { std::cout << "not recognized" << std::endl; }
};

int main() {
  lirvox::platform::install(lirvox::platform::systemPlatform("lirvox"));  // whose folders to use
  auto recognizer = lirvox::Lirvox::sharedInstance();
  // A process starts without a database: set one, and again after each update.
  recognizer->setDatabase(
      std::make_shared<lirvox::LirvoxDatabase>(lirvox::LirvoxSettings::databasePath()));
  recognizer->setDelegate(std::make_shared<Printer>());
  recognizer->startRecognize();
  std::this_thread::sleep_for(std::chrono::seconds(6));
}
