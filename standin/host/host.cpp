#include "standin/host/host.h"

#include "standin/host/host_state.h"

namespace marrowfen::standin {

Host::Host(Scene scene) : state_(std::make_unique<HostState>(std::move(scene))) { HostState::setCurrent(state_.get()); }

Host::~Host() { HostState::setCurrent(nullptr); }

Scene Host::scene() const { return state_->wholeScene(); }

int Host::liveHandles() const { return state_->liveHandles(); }
const std::vector<std::string>& Host::faults() const { return state_->handles.faults(); }

void Host::recordCalls() { state_->recordsCalls = true; }
const std::vector<std::string>& Host::calls() const { return state_->calls; }

void Host::setMainView(void* window) { state_->mainView = window; }
void Host::refuseNewLayers() { state_->refuseNextLayer = true; }

}  // namespace marrowfen::standin
