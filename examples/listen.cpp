// The program of the README: what does the microphone hear?
#include <future>
#include <iostream>

#include <lirvox/Lirvox.h>
#include <lirvox/LirvoxSettings.h>
#include <lirvox/platform/Platform.h>

struct Printer : lirvox::LirvoxDelegate {
  std::promise<void> answered;
  void didRecognize(std::int32_t id, float position, float) override {
    std::cout << "track " << id << " at " << position << " s" << std::endl;
    answered.set_value();
  }
  void didNotRecognize() override {
    std::cout << "not recognized" << std::endl;
    answered.set_value();
  }
};

int main() {
  lirvox::platform::install(lirvox::platform::systemPlatform("lirvox"));  // whose folders to use
  auto recognizer = lirvox::Lirvox::sharedInstance();
  lirvox::LirvoxError error;
  if (!recognizer->canRecognize(error)) {
    std::cerr << error.localizedDescription << std::endl;
    return 1;
  }
  // A process starts without a database: set one, and again after each update.
  recognizer->setDatabase(
      std::make_shared<lirvox::LirvoxDatabase>(lirvox::LirvoxSettings::databasePath()));
  auto printer = std::make_shared<Printer>();
  recognizer->setDelegate(printer);
  recognizer->startRecognize();
  printer->answered.get_future().wait();
}
