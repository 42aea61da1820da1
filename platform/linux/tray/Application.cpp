#include "platform/linux/tray/Application.h"

#include <glib-unix.h>

#include <csignal>
#include <utility>

namespace audrel::linuxos {

namespace {

gboolean terminateOnSignal(gpointer application) noexcept {
  static_cast<Application*>(application)->terminate();
  return G_SOURCE_CONTINUE;
}

}  // namespace

Application::Application()
    : context_(mainContext()), loop_(g_main_loop_new(context_.get(), FALSE)) {
  installSignalHandlers();
}

Application::~Application() {
  for (const SourceHandle& source : signalSources_) {
    g_source_destroy(source.get());
  }
}

void Application::setActivationPolicy(NS::ActivationPolicy /*policy*/) {}

void Application::setDelegate(const std::weak_ptr<NS::ApplicationDelegate>& delegate) {
  delegate_ = delegate;
}

void Application::run() {
  if (isTerminating_) {
    return;
  }
  if (const auto delegate = delegate_.lock()) {
    delegate->applicationDidFinishLaunching();
  }
  if (!isTerminating_) {
    g_main_loop_run(loop_.get());
  }
}

void Application::terminate() {
  if (isTerminating_) {
    return;
  }
  isTerminating_ = true;
  if (const auto delegate = delegate_.lock()) {
    delegate->applicationWillTerminate();
  }
  for (ModalSession* session : modalSessions_) {
    session->abort();
  }
  g_main_loop_quit(loop_.get());
}

void Application::presentAlert() const {
  if (!modalSessions_.empty() && modalSessions_.back()->present_) {
    modalSessions_.back()->present_();
  }
}

void Application::setModalObserver(std::function<void()> observer) {
  modalObserver_ = std::move(observer);
}

void Application::begin(ModalSession& session) {
  modalSessions_.push_back(&session);
  if (isTerminating_) {
    session.abort();
  }
  if (modalObserver_) {
    modalObserver_();
  }
}

void Application::end(ModalSession& session) {
  std::erase(modalSessions_, &session);
  if (modalObserver_) {
    modalObserver_();
  }
}

void Application::installSignalHandlers() {
  // A terminal that is gone and a file-size limit are failures of a write, no reason to end.
  for (const int signal : {SIGPIPE, SIGXFSZ}) {
    std::signal(signal, SIG_IGN);
  }
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    SourceHandle source(g_unix_signal_source_new(signal));
    g_source_set_callback(source.get(), terminateOnSignal, this, nullptr);
    g_source_attach(source.get(), context_.get());
    signalSources_.push_back(std::move(source));
  }
}

ModalSession::ModalSession(Application& application, std::function<void()> present)
    : application_(application),
      present_(std::move(present)),
      loop_(g_main_loop_new(application.context_.get(), FALSE)) {
  application_.begin(*this);
}

ModalSession::~ModalSession() {
  application_.end(*this);
}

bool ModalSession::wait() {
  if (!isFinished_) {
    g_main_loop_run(loop_.get());
  }
  return !isAborted_;
}

void ModalSession::finish() {
  isFinished_ = true;
  g_main_loop_quit(loop_.get());
}

void ModalSession::abort() {
  // An answer that came first stands.
  isAborted_ = isAborted_ || !isFinished_;
  finish();
}

}  // namespace audrel::linuxos
