// The exports of the library and their arguments, one line for each: what the contract test, the test of the loader's
// variants and the fuzz target have in common.
//
// A line names an export and its drawer. The drawer gives the arguments in their order: operands of exactly the size
// that the documentation says, filled with numbers from a Draw, and with each argument the values that the call must
// refuse, and how. From the signature come element types, and which operands are written.
#pragma once

#include <array>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "calls/operand.h"

namespace zvp::calls {

// An argument of any type that an export takes: a pointer, or up to four numbers.
class Argument {
 public:
  Argument(const void* p) : pointer_(const_cast<void*>(p)) {}
  template <class T>
  requires(std::is_arithmetic_v<T> || std::is_enum_v<T>) Argument(T v) : numbers_{static_cast<double>(v)} {}
  Argument(RoiSize v) : numbers_{double(v.width), double(v.height)} {}
  Argument(Point v) : numbers_{double(v.x), double(v.y)} {}
  Argument(Point32f v) : numbers_{v.x, v.y} {}
  Argument(Rect v) : numbers_{double(v.x), double(v.y), double(v.width), double(v.height)} {}

  template <class T>
  T as() const {
    if constexpr (std::is_pointer_v<T>) {
      return static_cast<T>(pointer_);
    } else if constexpr (std::is_arithmetic_v<T>) {
      return Number{numbers_[0]};
    } else if constexpr (std::is_same_v<T, Rect>) {
      return {Number{numbers_[0]}, Number{numbers_[1]}, Number{numbers_[2]}, Number{numbers_[3]}};
    } else {
      return {Number{numbers_[0]}, Number{numbers_[1]}};
    }
  }

 private:
  struct Number {
    double value;

    template <class T>
    operator T() const {
      if constexpr (std::is_integral_v<T>) return static_cast<T>(static_cast<std::int64_t>(value));
      return static_cast<T>(value);
    }
  };

  void* pointer_ = nullptr;
  std::array<double, 4> numbers_{};
};

// What a signature tells of a parameter.
struct Parameter {
  int depth;  // 1: a pointer, 2: a pointer to pointers
  bool isConst;
  bool isStruct;
  Element element;  // at the end of the pointers; bytes where its type is not known
};

template <class T>
constexpr Parameter parameterOf(int depth = 0) {
  if constexpr (std::is_pointer_v<T>) {
    return parameterOf<std::remove_pointer_t<T>>(depth + 1);
  } else {
    constexpr std::size_t kSize = [] {
      if constexpr (requires { sizeof(T); }) return sizeof(T);
      return std::size_t{1};
    }();
    return {depth, std::is_const_v<T>, std::is_class_v<T>, {kSize, std::is_floating_point_v<T>}};
  }
}

using Function = void (*)();
class Call;

struct Export {
  const char* name;
  Function address;
  std::span<const Parameter> parameters;
  Status (*invoke)(Function, const Argument*);
  void (*draw)(Call&);
};

template <class... A>
Export exportOf(const char* name, Status (*f)(A...), void (*draw)(Call&)) {
  static constexpr Parameter kParameters[] = {parameterOf<A>()...};
  const auto invoke = [](Function function, const Argument* a) {
    return [&]<std::size_t... i>(std::index_sequence<i...>) {
      return reinterpret_cast<Status (*)(A...)>(function)(a[i].template as<A>()...);
    }
    (std::index_sequence_for<A...>());
  };
  return {name, reinterpret_cast<Function>(f), kParameters, invoke, draw};
}
#define ZVP_EXPORT(draw, function) exportOf(#function, function, draw)

// A family is a file, a line here and one in calls.cpp.
using Exports = std::span<const Export>;
Exports arithmeticExports();
Exports detectExports();
Exports distanceExports();
Exports featuresExports();
Exports filterExports();
Exports geometryExports();
Exports integralExports();
Exports morphologyExports();
Exports opticalFlowExports();
Exports pyramidExports();
Exports segmentExports();

// All that return a status: that is, all but zvpcvGetLibVersion.
const std::vector<Export>& allExports();

// A promise that holds for every call was broken.
struct BrokenPromise : std::logic_error {
  using logic_error::logic_error;
};

// The order of checks: the fault of the lowest order decides. Later ones follow their arguments.
enum Order { kNull = 10, kSize = 20, kAfterSize = 22, kLeadingStep = 26, kStep = 30, kLater = 40 };

// Something that a valid call becomes by one other argument, and its status then.
struct Fault {
  int argument;
  Argument value;
  Status status;
  int order;
};

class Call {
 public:
  // `library`: a handle of the loader; null for the one that the program is linked with.
  Call(const Export& e, Draw& draw, void* library = nullptr);
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  ~Call();  // releases objects

  // --- For tests ---

  // A wild draw may come upon a preparation that is refused: then there is nothing to call.
  bool isComplete() const { return arguments_.size() == export_.parameters.size(); }
  const std::vector<Fault>& faults() const { return faults_; }
  // The call with some arguments replaced, at which it must fail. Throws BrokenPromise.
  Status runWith(std::initializer_list<const Fault*> faults);
  Status run();                               // once. Throws BrokenPromise
  std::vector<std::uint8_t> outcome() const;  // status and results of that run

  // --- For drawers: where the numbers come from, and what is asked for ---

  Draw& in;
  bool isFinite = false;  // images hold no infinities, NaNs or large numbers: some bits of results are not defined then

  bool is(std::string_view part) const { return name().find(part) != std::string_view::npos; }
  std::string_view name() const { return export_.name; }
  std::string suffix() const { return std::string(name().substr(name().find('_'))); }
  int channels() const { return is("_C3") ? 3 : is("_C4") ? 4 : 1; }
  bool hasNext() const { return !isComplete(); }
  const Parameter& next() const { return export_.parameters[arguments_.size()]; }
  int position() const { return static_cast<int>(arguments_.size()) - 1; }  // of the argument given last
  Access access() const { return next().isConst ? Access::kRead : Access::kWrite; }

  // --- For drawers: arguments, in their order ---

  void give(Argument a) { arguments_.push_back(a); }
  void give(RoiSize size, Order order);  // which must not be empty
  // The argument given last makes the call fail when it has one of these values.
  void rejects(std::initializer_list<Argument> values, Status status, int order = kLater, int argument = -1);
  int number(int low, int high, Status otherwise, int order = kLater);
  int length(int most, Order order = kSize);  // at least 1
  void value();                               // any
  void values();                              // all that are left

  // A pointer and a step; `row`: elements that the step must hold.
  Operand& image(const Spans& spans, double row, Order order = kStep);
  Operand& image(double width, double height, Order order = kStep) {
    return image(region(width, height), width, order);
  }
  Operand& image(RoiSize size, Order order = kStep) {
    return image(double(size.width) * channels(), size.height, order);
  }
  Operand& imageWithAnyStep(const Spans& spans, int step);
  int step(double row, Order order = kStep);  // alone, of rows of the pointer given last
  bool inPlace(int source);                   // the image given last is the same as this one; false where it cannot be

  // A pointer alone.
  Operand& array(double count, std::size_t alignment = 1);
  Operand& scalar() { return array(1); }
  Operand& scratch(int bytes, std::size_t alignment = 1);
  Operand& share(const Operand& operand, Access access);
  // `count` pointers to arrays that lie apart.
  void rows(double count, double values);
  void object(const std::string& release);  // a pointer to an object that the call makes
  void mayBeNull();                         // the pointer given last

  // --- For drawers: what is behind the arguments ---

  Operand& add(Operand operand);  // looked after like the operands of arguments
  // Rows with a step. Spans that would need too much memory get a step that the call must refuse; behind any such step
  // there is no memory.
  Operand laidOut(Access access, Element element, const Spans& spans, double row) const;
  // A call of another export that must succeed, drawn like this one; null where a wild one fails.
  Call* prepare(const std::string& name);
  // The same for regions that are a pixel narrower, for what must be refused; null where there are none.
  Call* prepareNarrower(const std::string& name, RoiSize size, int least = 1);
  Status call(const std::string& name, std::initializer_list<Argument> arguments) const;
  int bytesFrom(const std::string& query, std::vector<Argument> arguments) const;  // 0 where it fails
  void releaseAtEnd(const std::string& name, void* object) { objects_.push_back({name, object}); }
  const Argument& argument(int i) const { return arguments_[std::size_t(i)]; }
  const Operand& operandOf(int argument) const;
  void* made() const;  // the object of object()
  // Promises of a call that has not failed.
  void promise(const char* what, std::function<bool()> holds) { promises_.push_back({what, std::move(holds)}); }
  // More bytes of the outcome.
  void observe(std::function<void(std::vector<std::uint8_t>&)> append) { observations_.push_back(std::move(append)); }

 private:
  struct Object {
    std::string release;
    void* object;
  };
  struct Promise {
    const char* what;
    std::function<bool()> holds;
  };

  Function find(const Export& e) const;
  Operand& pointerTo(Operand operand);
  Status invoke(const std::vector<Argument>& arguments);
  void giveStep(int step, double row, Order order);
  void addWideFaults();

  const Export& export_;
  void* library_;
  std::vector<Argument> arguments_;
  std::vector<Fault> faults_;
  std::vector<int> sizes_;  // the arguments that were given as sizes
  Order firstStep_ = kLater;
  std::vector<std::unique_ptr<Operand>> operands_;
  std::vector<std::pair<int, std::size_t>> pointers_;  // arguments and their operands
  std::vector<std::unique_ptr<Call>> preparations_;
  std::vector<Object> objects_;
  std::string release_;
  const Operand* object_ = nullptr;
  std::vector<Promise> promises_;
  std::vector<std::function<void(std::vector<std::uint8_t>&)>> observations_;
  Status status_ = ErrBadArg;
};

// Drawers of many families: images of one size, the size, then numbers of any value; and sizes of buffers.
void elementwise(Call& c);
void query(Call& c);

}  // namespace zvp::calls
