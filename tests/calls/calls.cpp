#include "calls/calls.h"

#include <dlfcn.h>

#include <map>

namespace zvp::calls {
namespace {

void require(bool holds, std::string_view name, const char* promise) {
  if (!holds) throw BrokenPromise(std::string(name) + ": " + promise);
}

const Export& exportNamed(const std::string& name) {
  static const std::map<std::string_view, const Export*> kByName = [] {
    std::map<std::string_view, const Export*> byName;
    for (const Export& e : allExports()) byName[e.name] = &e;
    return byName;
  }();
  const auto found = kByName.find(name);
  require(found != kByName.end(), name, "an export of this name is listed");
  return *found->second;
}

}  // namespace

const std::vector<Export>& allExports() {
  static const std::vector<Export> kAll = [] {
    std::vector<Export> all;
    for (const Exports family : {arithmeticExports(), detectExports(), distanceExports(), featuresExports(),
                                 filterExports(), geometryExports(), integralExports(), morphologyExports(),
                                 opticalFlowExports(), pyramidExports(), segmentExports()})
      all.insert(all.end(), family.begin(), family.end());
    return all;
  }();
  return kAll;
}

// --- The call ---------------------------------------------------------------------------------------------------------

Call::Call(const Export& e, Draw& draw, void* library) : in(draw), export_(e), library_(library) {
  arguments_.reserve(e.parameters.size());
  e.draw(*this);
  require(isComplete() || in.isWild(), name(), "the drawer gives all arguments");
  addWideFaults();
  for (const auto& o : operands_) o->remember();
}

Call::~Call() {
  for (const Object& o : objects_) call(o.release, {o.object});
}

Function Call::find(const Export& e) const {
  return library_ == nullptr ? e.address : reinterpret_cast<Function>(dlsym(library_, e.name));
}

Status Call::invoke(const std::vector<Argument>& arguments) {
  const Status status = export_.invoke(find(export_), arguments.data());
  for (const auto& o : operands_)
    require(o->isIntact(status < 0), name(), status < 0 ? "a failing call writes nothing" : "only outputs change");
  return status;
}

Status Call::runWith(std::initializer_list<const Fault*> faults) {
  std::vector<Argument> arguments = arguments_;
  for (const Fault* f : faults) arguments[std::size_t(f->argument)] = f->value;
  const Status status = invoke(arguments);
  require(status < 0, name(), "a call with a fault fails");
  return status;
}

Status Call::run() {
  status_ = invoke(arguments_);
  if (status_ < 0) return status_;
  for (const Promise& p : promises_) require(p.holds(), name(), p.what);
  if (!release_.empty()) releaseAtEnd(release_, made());
  if (is("Free"))
    for (const auto& p : preparations_) p->objects_.clear();
  return status_;
}

std::vector<std::uint8_t> Call::outcome() const {
  std::vector<std::uint8_t> bytes(sizeof status_);
  std::memcpy(bytes.data(), &status_, sizeof status_);
  for (const auto& o : operands_) o->appendResult(bytes);
  if (status_ >= 0)
    for (const auto& append : observations_) append(bytes);
  return bytes;
}

// --- Arguments --------------------------------------------------------------------------------------------------------

void Call::give(RoiSize size, Order order) {
  give(size);
  rejects({RoiSize{0, size.height}, RoiSize{size.width, 0}, RoiSize{-5, size.height}, RoiSize{size.width, INT_MIN},
           RoiSize{0, 0}},
          ErrSize, order);
  sizes_.push_back(position());
}

// Rows so wide that their bytes wrap in 32 bits need a wider step, too.
void Call::addWideFaults() {
  if (firstStep_ == kLater) return;
  for (const int i : sizes_)
    for (const int width : {INT_MAX, INT_MAX / 2 + 1, 1 << 29})
      faults_.push_back({i, RoiSize{width, argument(i).as<RoiSize>().height}, ErrStep, firstStep_});
}

void Call::rejects(std::initializer_list<Argument> values, Status status, int order, int argument) {
  if (argument < 0) argument = position();
  for (const Argument& v : values)
    faults_.push_back({argument, v, status, order == kLater ? kLater + argument : order});
}

int Call::number(int low, int high, Status otherwise, int order) {
  const int n = in.number(low, high);
  give(n);
  if (low > INT_MIN) rejects({low - 1, INT_MIN}, otherwise, order);
  if (high < INT_MAX) rejects({high + 1, INT_MAX}, otherwise, order);
  return n;
}

int Call::length(int most, Order order) {
  const int n = in.number(1, most);
  give(n);
  rejects({0, -1, INT_MIN}, ErrSize, order);
  return n;
}

void Call::value() {
  const Parameter& p = next();
  if (!p.element.isFloat) return give(in.oneIn(2) ? in.integer(-9, 300) : in.integer(INT_MIN, INT_MAX));
  const float v = in.real();
  give(isFinite && !(v > -1e3f && v < 1e3f) ? 0.5f : v);
}

void Call::values() {
  while (hasNext()) value();
}

Operand& Call::pointerTo(Operand operand) {
  pointers_.push_back({static_cast<int>(arguments_.size()), operands_.size()});
  Operand& o = add(std::move(operand));
  give(in.wildly(64) ? nullptr : o.start());
  rejects({nullptr}, ErrNullPtr, kNull);
  return o;
}

Operand& Call::add(Operand operand) { return *operands_.emplace_back(std::make_unique<Operand>(std::move(operand))); }

Operand Call::laidOut(Access access, Element element, const Spans& spans, double row) const {
  const double rowBytes = row * double(element.size);
  int step = in.step(static_cast<int>(std::clamp<double>(rowBytes, 0, INT_MAX)), int(element.size));
  const auto [before, after] = extent(spans, step, element);
  if (before + after > kMostBytes && !in.isFar()) step = static_cast<int>(std::min(rowBytes, kMostBytes)) - 1;
  const bool isRefused = step < rowBytes || step % int(element.size) != 0;
  return Operand(in, access, element, isRefused ? Spans{} : spans, step, isFinite);
}

Operand& Call::image(const Spans& spans, double row, Order order) {
  Operand& o = pointerTo(laidOut(access(), next().element, spans, row));
  giveStep(o.step(), row, order);
  return o;
}

Operand& Call::imageWithAnyStep(const Spans& spans, int step) {
  Operand& o = pointerTo(Operand(in, access(), next().element, spans, step, isFinite));
  give(step);
  return o;
}

int Call::step(double row, Order order) {
  const std::size_t element = export_.parameters[std::size_t(position())].element.size;
  const int step = in.step(static_cast<int>(std::clamp<double>(row * double(element), 0, INT_MAX)), int(element));
  giveStep(step, row, order);
  return step;
}

// Of rows of the pointer given last.
void Call::giveStep(int step, double row, Order order) {
  const int element = static_cast<int>(export_.parameters[std::size_t(position())].element.size);
  const int least = static_cast<int>(std::clamp<double>(row * element, 1, INT_MAX - 8));
  give(step);
  rejects({least - 1, 0, -least, INT_MIN}, ErrStep, order);
  if (element > 1) rejects({least + 1, least + element / 2}, ErrStepNotMultiple, order + 1);
  firstStep_ = std::min(firstStep_, order);
}

bool Call::inPlace(int source) {
  Operand& destination = *operands_.back();
  Operand& o = *operands_[std::size_t(
      std::find_if(pointers_.begin(), pointers_.end(), [=](auto& p) { return p.first == source; })->second)];
  if (destination.access() != Access::kWrite || o.element().size != destination.element().size) return false;
  destination.alias(o);
  o = o.seenAs(Access::kScratch);
  arguments_[arguments_.size() - 2] = argument(source);
  arguments_[arguments_.size() - 1] = argument(source + 1);
  return true;
}

Operand& Call::array(double count, std::size_t alignment) {
  return pointerTo(Operand(in, access(), next().element, count, isFinite, alignment));
}

Operand& Call::scratch(int bytes, std::size_t alignment) {
  return pointerTo(Operand(in, Access::kScratch, {1, false}, bytes, isFinite, alignment));
}

Operand& Call::share(const Operand& operand, Access access) { return pointerTo(operand.seenAs(access)); }

void Call::rows(double count, double values) {
  const bool exist = count >= 1 && count <= 200 && values >= 1 && values <= 3000;  // else the call must refuse them
  const Parameter p = next();
  std::vector<void*> starts;
  for (int y = 0; exist && y < count; ++y)
    starts.push_back(add(Operand(in, access(), p.element, values, isFinite)).start());
  // Null outputs are found too late for a call to write nothing.
  if (p.isConst && !starts.empty() && in.wildly(16))
    starts[std::size_t(in.integer(0, int(starts.size()) - 1))] = nullptr;
  const auto pointers = [&] {
    Operand o(in, Access::kRead, {sizeof(void*), false}, double(starts.size()), false);
    if (exist) std::memcpy(o.start(), starts.data(), o.size());
    return o;
  };
  pointerTo(pointers());
  for (void*& start : starts) {
    if (!p.isConst || in.isWild()) break;
    void* const row = std::exchange(start, nullptr);
    rejects({add(pointers()).start()}, ErrNullPtr, kLater + 40);
    start = row;
  }
}

void Call::object(const std::string& release) {
  object_ = &scratch(sizeof(void*));
  release_ = release;
}

void* Call::made() const { return object_->get<void*>(); }

void Call::mayBeNull() { faults_.pop_back(); }

// --- Behind the arguments ----------------------------------------------------------------------------------------------

Call* Call::prepare(const std::string& name) {
  Call& p = *preparations_.emplace_back(std::make_unique<Call>(exportNamed(name), in, library_));
  const bool isMade = p.isComplete() && p.run() >= 0;
  require(isMade || in.isWild(), name, "a preparation succeeds");
  return isMade ? &p : nullptr;
}

Call* Call::prepareNarrower(const std::string& name, RoiSize size, int least) {
  if (in.isWild() || size.width <= least) return nullptr;
  const RoiSize given = in.give({size.width - 1, size.height});
  Call* prepared = prepare(name);
  in.give(given);
  return prepared;
}

Status Call::call(const std::string& name, std::initializer_list<Argument> arguments) const {
  const Export& e = exportNamed(name);
  require(arguments.size() == e.parameters.size(), name, "a preparation gives all arguments");
  return e.invoke(find(e), arguments.begin());
}

int Call::bytesFrom(const std::string& query, std::vector<Argument> arguments) const {
  int bytes = 0;
  arguments.push_back(&bytes);
  const Export& e = exportNamed(query);
  require(arguments.size() == e.parameters.size(), query, "a query gets all arguments");
  return e.invoke(find(e), arguments.data()) >= 0 ? bytes : 0;
}

const Operand& Call::operandOf(int argument) const {
  return *operands_[std::find_if(pointers_.begin(), pointers_.end(), [=](auto& p) {
                      return p.first == argument;
                    })->second];
}

// --- Drawers of many families ------------------------------------------------------------------------------------------

void elementwise(Call& c) {
  const RoiSize size = c.in.size();
  while (c.next().depth > 0) {
    c.image(size);
    if (c.position() > 1 && c.in.oneIn(8)) c.inPlace(c.in.oneIn(2) ? 0 : c.position() - 3);
  }
  c.give(size, kSize);
  c.values();
}

void query(Call& c) {
  while (c.hasNext()) {
    if (c.next().depth > 0) {
      c.scalar();
    } else if (c.next().isStruct) {
      c.give(c.in.size(), kSize);
      if (!c.is("Row") && !c.is("Column")) c.rejects({RoiSize{INT_MAX, INT_MAX}}, ErrSize, kSize);
      if (c.is("Column") && !c.is("32f")) c.rejects({RoiSize{INT_MAX, 1}}, ErrSize, kSize);
    } else {
      c.length(80);
      if (!c.is("Column")) c.rejects({INT_MAX}, ErrSize, kSize);
    }
  }
}

}  // namespace zvp::calls
