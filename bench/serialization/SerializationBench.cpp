// Writing and reading an object graph of 50,000 customers (an address, a few orders, dates) as
// JSON and XML with the serializers that walk the type descriptions, beside nlohmann/json,
// cereal's JSON and XML archives and Boost.JSON with Boost.Describe on the same data; CPU time of
// each phase, and the time ratios.
#include "support/Ratios.h"
#include "support/Throughput.h"

#include <lorvane/uLxJSONSerializer.h>
#include <lorvane/uLxSerializer.h>
#include <lorvane/uLxTypes.h>
#include <lorvane/uLxXMLSerializer.h>

#ifdef LORVANE_BENCH_NLOHMANN
#include <nlohmann/json.hpp>
#endif
#ifdef LORVANE_BENCH_CEREAL
#include <cereal/archives/json.hpp>
#include <cereal/archives/xml.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#endif
#ifdef LORVANE_BENCH_BOOST_JSON
#include <boost/describe.hpp>
#include <boost/json.hpp>
#endif

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace lorvane;

constexpr int Customers = 50000;
constexpr int Repetitions = 5;

// --- the rivals' model: plain values, a date as its ISO text ------------------------------------

struct Day {
  int Y = 1900, M = 1, D = 1;
};

std::string DayText(const Day& ADay) {
  char Buf[16];
  std::snprintf(Buf, sizeof Buf, "%04d-%02d-%02d", ADay.Y, ADay.M, ADay.D);
  return Buf;
}

Day DayFromText(const std::string& AText) {
  Day R;
  if (AText.size() >= 10)
    R = {std::atoi(AText.substr(0, 4).c_str()), std::atoi(AText.substr(5, 2).c_str()),
         std::atoi(AText.substr(8, 2).c_str())};
  return R;
}

struct Address {
  std::string Street, City;
  int Zip = 0;
};

struct Order {
  int Id = 0;
  Day Placed;
  double Total = 0;
};

struct Customer {
  int Id = 0;
  std::string Name, Email;
  Day Since;
  Address Home;
  std::vector<Order> Orders;
};

struct Shop {
  std::vector<Customer> Customers;
};

// The same customers every run, about 200 to 300 bytes of text each.
Shop MakeShop() {
  static const char* const First[] = {"Ada",     "Alan",   "Grace",   "Edsger",
                                      "Barbara", "Donald", "Frances", "John"};
  static const char* const Last[] = {"Lovelace", "Turing", "Hopper", "Dijkstra",
                                     "Liskov",   "Knuth",  "Allen",  "Backus"};
  static const char* const Cities[] = {"London", "Paris", "Zürich", "Kraków", "Lyon", "Oslo"};
  Shop S;
  S.Customers.reserve(Customers);
  unsigned Seed = 12345;
  const auto Next = [&Seed] { return Seed = Seed * 1103515245u + 12345u, (Seed >> 8) & 0xffff; };
  for (int I = 0; I < Customers; ++I) {
    Customer C;
    C.Id = I + 1;
    C.Name = std::string(First[Next() % 8]) + " " + Last[Next() % 8];
    // Appended, not concatenated: g++ 12 warns falsely about "c" + std::string.
    C.Email = std::to_string(I);
    C.Email.insert(0, 1, 'c');
    C.Email += "@shop.uk";
    C.Since = {1990 + int(Next() % 30), 1 + int(Next() % 12), 1 + int(Next() % 28)};
    C.Home = {std::to_string(1 + Next() % 200) + " High St", Cities[Next() % 6],
              int(10000 + Next() % 89999)};
    const int Orders = 1 + int(Next() % 3);
    for (int K = 0; K < Orders; ++K)
      C.Orders.push_back({I * 10 + K,
                          {2015 + int(Next() % 10), 1 + int(Next() % 12), 1 + int(Next() % 28)},
                          double(Next() % 100000) / 100.0});
    S.Customers.push_back(std::move(C));
  }
  return S;
}

// What each side's graph must agree on after a read.
struct Check {
  long long Customers = 0, Orders = 0, Sum = 0;
  bool operator==(const Check&) const = default;
};

long long DaySum(int AY, int AM, int AD) { return AY * 372LL + AM * 31LL + AD; }

Check CheckOf(const Shop& AShop) {
  Check R;
  for (const Customer& C : AShop.Customers) {
    ++R.Customers;
    R.Sum += C.Id + C.Home.Zip + DaySum(C.Since.Y, C.Since.M, C.Since.D) + C.Name.size() +
             C.Email.size() + C.Home.City.size() + C.Home.Street.size();
    for (const Order& O : C.Orders) {
      ++R.Orders;
      R.Sum += O.Id + std::llround(O.Total * 100) + DaySum(O.Placed.Y, O.Placed.M, O.Placed.D);
    }
  }
  return R;
}

// --- Lorvane's model: described classes held by pointer, as an application writes them --------

struct TLxAddress {
  UnicodeString Street;
  UnicodeString City;
  Integer Zip = 0;
};

class TLxOrder : public TObject {
  LX_CLASS(TLxOrder, TObject)
  TLxOrder() = default;
  Integer Id = 0;
  TDate Placed;
  Double Total = 0;

protected:
  ~TLxOrder() override = default;
};

class TLxCustomer : public TObject {
  LX_CLASS(TLxCustomer, TObject)
  TLxCustomer() = default;
  Integer Id = 0;
  UnicodeString Name;
  UnicodeString Email;
  TDate Since;
  TLxAddress Home;
  std::vector<TLxOrder*> Orders; // owned

protected:
  ~TLxCustomer() override {
    for (TLxOrder* O : Orders)
      O->Free();
  }
};

class TLxShop : public TObject {
  LX_CLASS(TLxShop, TObject)
  TLxShop() = default;
  std::vector<TLxCustomer*> Customers; // owned

protected:
  ~TLxShop() override {
    for (TLxCustomer* C : Customers)
      C->Free();
  }
};

void DescribeLorvaneModel() {
  LxDescribeAggregate<TLxAddress>(u"Bench.TAddress");
  LxDescribeClass<TLxOrder>(u"Bench.TOrder")
      .Field(u"Id", &TLxOrder::Id)
      .Field(u"Placed", &TLxOrder::Placed)
      .Field(u"Total", &TLxOrder::Total);
  LxDescribeClass<TLxCustomer>(u"Bench.TCustomer")
      .Field(u"Id", &TLxCustomer::Id)
      .Field(u"Name", &TLxCustomer::Name)
      .Field(u"Email", &TLxCustomer::Email)
      .Field(u"Since", &TLxCustomer::Since)
      .Field(u"Home", &TLxCustomer::Home)
      .Field(u"Orders", &TLxCustomer::Orders);
  LxDescribeClass<TLxShop>(u"Bench.TShop").Field(u"Customers", &TLxShop::Customers);
}

TDate LxDay(const Day& ADay) { return TDate(EncodeDate(Word(ADay.Y), Word(ADay.M), Word(ADay.D))); }

TOwned<TLxShop> LorvaneShop(const Shop& AShop) {
  TOwned<TLxShop> S(New<TLxShop>());
  for (const Customer& C : AShop.Customers) {
    auto* LC = New<TLxCustomer>();
    S->Customers.push_back(LC);
    LC->Id = C.Id;
    LC->Name = UTF8ToString(C.Name);
    LC->Email = UTF8ToString(C.Email);
    LC->Since = LxDay(C.Since);
    LC->Home = {UTF8ToString(C.Home.Street), UTF8ToString(C.Home.City), C.Home.Zip};
    for (const Order& O : C.Orders) {
      auto* LO = New<TLxOrder>();
      LC->Orders.push_back(LO);
      LO->Id = O.Id;
      LO->Placed = LxDay(O.Placed);
      LO->Total = O.Total;
    }
  }
  return S;
}

long long LxDaySum(TDateTime AValue) {
  Word Y = 0, M = 0, D = 0;
  DecodeDate(AValue, Y, M, D);
  return DaySum(Y, M, D);
}

// Lengths in UTF-8 bytes, as the rivals count them.
long long Utf8Size(const UnicodeString& AText) {
  return static_cast<long long>(StringToUTF8(AText).size());
}

Check CheckOf(const TLxShop* AShop) {
  Check R;
  if (!AShop)
    return R;
  for (const TLxCustomer* C : AShop->Customers) {
    ++R.Customers;
    R.Sum += C->Id + C->Home.Zip + LxDaySum(C->Since) + Utf8Size(C->Name) + Utf8Size(C->Email) +
             Utf8Size(C->Home.City) + Utf8Size(C->Home.Street);
    for (const TLxOrder* O : C->Orders) {
      ++R.Orders;
      R.Sum += O->Id + std::llround(O->Total * 100) + LxDaySum(O->Placed);
    }
  }
  return R;
}

// --- the sides: Write (graph to text), Read (text to a new graph), CheckOf ---------------------

struct LorvaneSide {
  using Graph = TOwned<TLxShop>;
  static Graph Make(const Shop& AShop) { return LorvaneShop(AShop); }
  static std::string Write(const Graph& AGraph, bool AXML) {
    // TLxSerializedData is a std::string of UTF-8: no copy.
    return LxSerialize(AXML ? ldsXML : ldsJSON, TValue::From(AGraph.get()));
  }
  static Graph Read(const std::string& AText, bool AXML) {
    // The orders and customers belong to the graph, whose destructors free them.
    TObjectList* KeptByTheGraph = nullptr;
    TOwned<TObject> Read(LxCreateFrom(AXML ? ldsXML : ldsJSON, AText, &KeptByTheGraph));
    return Graph(static_cast<TLxShop*>(Read.release()));
  }
  static Check CheckOf(const Graph& AGraph) { return ::CheckOf(AGraph.get()); }
};

struct PlainGraph {
  using Graph = Shop;
  static Graph Make(const Shop& AShop) { return AShop; }
  static Check CheckOf(const Graph& AGraph) { return ::CheckOf(AGraph); }
};

#ifdef LORVANE_BENCH_NLOHMANN
void to_json(nlohmann::json& J, const Day& ADay) { J = DayText(ADay); }
void from_json(const nlohmann::json& J, Day& ADay) { ADay = DayFromText(J.get<std::string>()); }
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Address, Street, City, Zip)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Order, Id, Placed, Total)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Customer, Id, Name, Email, Since, Home, Orders)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Shop, Customers)

struct NlohmannSide : PlainGraph {
  static std::string Write(const Graph& AGraph, bool) { return nlohmann::json(AGraph).dump(); }
  static Graph Read(const std::string& AText, bool) {
    return nlohmann::json::parse(AText).get<Shop>();
  }
};
#endif

#ifdef LORVANE_BENCH_CEREAL
template <class A> std::string save_minimal(const A&, const Day& ADay) { return DayText(ADay); }
template <class A> void load_minimal(const A&, Day& ADay, const std::string& AText) {
  ADay = DayFromText(AText);
}
template <class A> void serialize(A& Ar, Address& X) {
  Ar(cereal::make_nvp("Street", X.Street), cereal::make_nvp("City", X.City),
     cereal::make_nvp("Zip", X.Zip));
}
template <class A> void serialize(A& Ar, Order& X) {
  Ar(cereal::make_nvp("Id", X.Id), cereal::make_nvp("Placed", X.Placed),
     cereal::make_nvp("Total", X.Total));
}
template <class A> void serialize(A& Ar, Customer& X) {
  Ar(cereal::make_nvp("Id", X.Id), cereal::make_nvp("Name", X.Name),
     cereal::make_nvp("Email", X.Email), cereal::make_nvp("Since", X.Since),
     cereal::make_nvp("Home", X.Home), cereal::make_nvp("Orders", X.Orders));
}
template <class A> void serialize(A& Ar, Shop& X) {
  Ar(cereal::make_nvp("Customers", X.Customers));
}

struct CerealSide : PlainGraph {
  static std::string Write(const Graph& AGraph, bool AXML) {
    std::ostringstream Out;
    if (AXML) {
      // Not indented, like Lorvane's text.
      cereal::XMLOutputArchive Ar(
          Out, cereal::XMLOutputArchive::Options(std::numeric_limits<double>::max_digits10, false));
      Ar(cereal::make_nvp("Shop", AGraph));
    } else {
      cereal::JSONOutputArchive Ar(Out, cereal::JSONOutputArchive::Options::NoIndent());
      Ar(cereal::make_nvp("Shop", AGraph));
    }
    return std::move(Out).str();
  }
  static Graph Read(const std::string& AText, bool AXML) {
    Shop S;
    std::istringstream In(AText);
    if (AXML) {
      cereal::XMLInputArchive Ar(In);
      Ar(cereal::make_nvp("Shop", S));
    } else {
      cereal::JSONInputArchive Ar(In);
      Ar(cereal::make_nvp("Shop", S));
    }
    return S;
  }
};
#endif

#ifdef LORVANE_BENCH_BOOST_JSON
BOOST_DESCRIBE_STRUCT(Address, (), (Street, City, Zip))
BOOST_DESCRIBE_STRUCT(Order, (), (Id, Placed, Total))
BOOST_DESCRIBE_STRUCT(Customer, (), (Id, Name, Email, Since, Home, Orders))
BOOST_DESCRIBE_STRUCT(Shop, (), (Customers))
void tag_invoke(const boost::json::value_from_tag&, boost::json::value& J, const Day& ADay) {
  J = DayText(ADay).c_str();
}
Day tag_invoke(const boost::json::value_to_tag<Day>&, const boost::json::value& J) {
  return DayFromText(std::string(J.as_string()));
}

struct BoostJSONSide : PlainGraph {
  static std::string Write(const Graph& AGraph, bool) {
    return boost::json::serialize(boost::json::value_from(AGraph));
  }
  static Graph Read(const std::string& AText, bool) {
    return boost::json::value_to<Shop>(boost::json::parse(AText));
  }
};
#endif

const Shop& TheShop() {
  static const Shop S = MakeShop();
  return S;
}

std::vector<std::pair<std::string, std::string>> Pairs;

// A side's times count only where one write and one read give back the graph it started with.
template <class Side> bool AddSide(const std::string& ASide, bool AXML) {
  const std::string Format = AXML ? "XML" : "JSON";
  const Check Want = CheckOf(TheShop());
  auto Graph = std::make_shared<typename Side::Graph>(Side::Make(TheShop()));
  auto Text = std::make_shared<std::string>(Side::Write(*Graph, AXML));
  const Check Got = Side::CheckOf(Side::Read(*Text, AXML));
  std::printf("%-10s %-4s %9zu bytes, %lld customers, %lld orders, checksum %lld%s\n",
              ASide.c_str(), Format.c_str(), Text->size(), Got.Customers, Got.Orders, Got.Sum,
              Got == Want ? "" : "  MISMATCH");
  if (!(Got == Want))
    return false;
  const auto Add = [&](const std::string& APhase, std::function<void(benchmark::State&)> AFn) {
    const std::string Name = ASide + "/" + Format + "/" + APhase;
    benchmark::RegisterBenchmark(Name.c_str(), std::move(AFn))
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(Repetitions)
        ->ReportAggregatesOnly(true);
    if (ASide != "Lorvane")
      Pairs.emplace_back("Lorvane/" + Format + "/" + APhase, Name);
  };
  Add("write", [Graph, AXML](benchmark::State& S) {
    for (auto _ : S) {
      const double Start = bench::ThreadSeconds();
      const std::string Out = Side::Write(*Graph, AXML);
      S.SetIterationTime(bench::ThreadSeconds() - Start);
      benchmark::DoNotOptimize(Out.data());
    }
  });
  Add("read", [Text, AXML](benchmark::State& S) {
    for (auto _ : S) {
      const double Start = bench::ThreadSeconds();
      typename Side::Graph In = Side::Read(*Text, AXML);
      S.SetIterationTime(bench::ThreadSeconds() - Start);
      benchmark::DoNotOptimize(&In);
    }
  });
  return true;
}

} // namespace

// LORVANE_BENCH_PROFILE=JSON/write (or JSON/read, XML/write, XML/read) runs that Lorvane phase
// once on LORVANE_BENCH_CUSTOMERS customers (default 5,000), for a profiler:
//   valgrind --tool=callgrind --toggle-collect='*ProfiledPhase*' bench_serialization
[[gnu::noinline]] bool ProfiledPhase(const LorvaneSide::Graph& AGraph, const std::string& AText,
                                     bool AXML, bool AWrite) {
  if (AWrite)
    return !LorvaneSide::Write(AGraph, AXML).empty();
  return LorvaneSide::CheckOf(LorvaneSide::Read(AText, AXML)) == LorvaneSide::CheckOf(AGraph);
}

int ProfileOnePhase(const std::string& APhase) {
  const char* Count = std::getenv("LORVANE_BENCH_CUSTOMERS");
  Shop Small = TheShop();
  Small.Customers.resize(std::min<size_t>(Small.Customers.size(), Count ? std::atoi(Count) : 5000));
  const bool XML = APhase.rfind("XML", 0) == 0;
  const bool Write = APhase.find("write") != std::string::npos;
  const LorvaneSide::Graph Graph = LorvaneSide::Make(Small);
  const std::string Text = Write ? std::string() : LorvaneSide::Write(Graph, XML);
  return ProfiledPhase(Graph, Text, XML, Write) ? EXIT_SUCCESS : EXIT_FAILURE;
}

int main(int argc, char** argv) {
  try {
    DescribeLorvaneModel();
    if (const char* Phase = std::getenv("LORVANE_BENCH_PROFILE"))
      return ProfileOnePhase(Phase);
    bool Ok = AddSide<LorvaneSide>("Lorvane", false) && AddSide<LorvaneSide>("Lorvane", true);
#ifdef LORVANE_BENCH_NLOHMANN
    Ok = AddSide<NlohmannSide>("nlohmann", false) && Ok;
#endif
#ifdef LORVANE_BENCH_CEREAL
    Ok = AddSide<CerealSide>("cereal", false) && Ok;
    Ok = AddSide<CerealSide>("cereal", true) && Ok;
#endif
#ifdef LORVANE_BENCH_BOOST_JSON
    Ok = AddSide<BoostJSONSide>("BoostJSON", false) && Ok;
#endif
    if (!Ok)
      return EXIT_FAILURE;
  } catch (const std::exception& E) {
    std::fprintf(stderr, "failed: %s\n", E.what());
    return EXIT_FAILURE;
  }
  return bench::RunWithRatios(argc, argv, Pairs);
}
