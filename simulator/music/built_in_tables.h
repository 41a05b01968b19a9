#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "music/music_library.h"

/// The tables from which the built-in library is generated. Every name is invented.
namespace simulator {

/// A list of words of any length. An index beyond its end starts again at its beginning.
class Words {
 public:
  constexpr Words() = default;
  template <size_t kCount>
  // NOLINTNEXTLINE(google-explicit-constructor): a table names its words and nothing else
  constexpr Words(const std::string_view (&list)[kCount]) : words(list), count(kCount) {}
  constexpr size_t size() const { return count; }
  /// Returns an empty text when the list is empty.
  constexpr std::string_view at(size_t index) const {
    return count == 0 ? std::string_view() : words[index % count];
  }

 private:
  const std::string_view* words = nullptr;
  size_t count = 0;
};

// Track titles are made from patterns. {a} of the style's first list and {b} of its second change
// with every track. {w} and {k}, of the same lists, stay until all patterns were used: the
// movements of one work. {n} is the track's number on its album.

inline constexpr std::string_view kPlainPatterns[] = {
    "{a} {b}",         "The {b} Was {a}", "{a} as the {b}",         "{a} {b} Again",
    "Ask the {a} {b}", "One {a} {b}",     "Half as {a} as the {b}",
};
inline constexpr std::string_view kQualities[] = {
    "Unhurried", "Copper",   "Borrowed", "Tidal",    "Paper",     "Northbound",  "Half-Lit",
    "Woollen",   "Salted",   "Folded",   "Inland",   "Weathered", "Crooked",     "Patient",
    "Lamplit",   "Windward", "Lowland",  "Freckled", "Unsent",    "Second-Hand",
};
inline constexpr std::string_view kThings[] = {
    "Estuary",   "Almanac",  "Viaduct",   "Orchard",   "Semaphore",   "Carousel",    "Ferryman",
    "Barometer", "Postcard", "Aqueduct",  "Tramway",   "Greenhouse",  "Observatory", "Causeway",
    "Gazette",   "Overpass", "Signalman", "Timetable", "Lamplighter", "Weathercock", "Cartographer",
};

inline constexpr std::string_view kLoudQualities[] = {
    "Iron",   "Runaway", "Concrete",   "Overheated", "Unpaid",      "Rusted",     "Hydraulic",
    "Stolen", "Feral",   "Unlicensed", "Sleepless",  "Counterfeit", "Thunderous",
};

inline constexpr std::string_view kMachinePatterns[] = {
    "{a} {b}",
    "{a} {b} (Dub)",
    "{a} {b}, Take {n}",
};
inline constexpr std::string_view kMachineQualities[] = {
    "Phase", "Carrier", "Sine", "Binary",  "Vector", "Parallel", "Static",
    "Lumen", "Quartz",  "Mono", "Halogen", "Cobalt", "Delta",
};
inline constexpr std::string_view kMachineThings[] = {
    "Relay",    "Lattice", "Oscillator", "Kilowatt", "Dial Tone", "Substation",
    "Envelope", "Grid",    "Modem",      "Cassette", "Capacitor", "Runway",
};

inline constexpr std::string_view kMovementPatterns[] = {
    "{w} in {k}: I. Allegro moderato",
    "{w} in {k}: II. Andante",
    "{w} in {k}: III. Menuetto",
    "{w} in {k}: IV. Finale, presto",
};
inline constexpr std::string_view kForms[] = {
    "Sonata No. 3", "Divertimento No. 1", "Suite No. 2", "Serenade No. 5", "Partita No. 4",
};
inline constexpr std::string_view kKeys[] = {
    "D major", "G minor", "B-flat major", "E minor", "A major", "C minor", "F-sharp minor",
};

inline constexpr std::string_view kJazzPatterns[] = {
    "{b} at a Quarter to {a}",
    "{a} Steps to the {b}",
    "{a} O'Clock {b}",
    "{a} Bars for the {b}",
};
inline constexpr std::string_view kHours[] = {
    "Two", "Five", "Eleven", "Seven", "Nine", "Three", "Twelve",
};
inline constexpr std::string_view kHotelThings[] = {
    "Cloakroom", "Lobby",         "Umbrella",    "Doorman",     "Piano Stool", "Night Bus",
    "Elevator",  "Balcony",       "Teaspoon",    "Fire Escape", "Corridor",    "Revolving Door",
    "Ashtray",   "Laundry Chute", "Switchboard", "Room Key",
};

inline constexpr std::string_view kFrenchPatterns[] = {
    "Les {b} {a}",
    "Où vont les {b} {a} ?",
    "Encore des {b} {a}",
    "Mes {b} {a}",
};
inline constexpr std::string_view kFrenchThings[] = {
    "réverbères", "tramways", "façades",    "châtaignes",
    "péniches",   "marées",   "carrefours", "fenêtres",
};
inline constexpr std::string_view kFrenchQualities[] = {
    "de passage", "sous la pluie", "à l'envers",   "du dimanche",
    "d'hiver",    "de mon père",   "en équilibre",
};

/// The lists below contain whole titles.
inline constexpr std::string_view kOwnTitle[] = {"{b}"};
inline constexpr std::string_view kGermanTitles[] = {
    "Straßenbahn nach Süden", "Übermorgen", "Großer Bahnhof", "Kühle Küche",
    "Öl auf Wasser",          "Ärmelkanal", "Fußnote",        "Glühwürmchenzähler",
};
inline constexpr std::string_view kNordicTitles[] = {
    "Snö på brädgården", "Ålefiskerens datter", "Blå fyrtårn", "Kaffe på øya",
    "Älven väntar",      "Nattergalens pause",  "Sju broer",   "Lång väg till färjan",
};
inline constexpr std::string_view kIberianTitles[] = {
    "La mañana del farolero",  "Água parada", "Corazón de corcho", "Canção do sinaleiro",
    "El señor de los relojes", "Três pontes", "Último tranvía",    "Limão e sal",
};
inline constexpr std::string_view kGreekTitles[] = {
    "Το φανάρι",           "Νυχτερινό δρομολόγιο", "Αλάτι και λεμόνι", "Η γέφυρα του Μάρτη",
    "Ο φύλακας του φάρου", "Άνεμος στο παράθυρο",  "Τελευταίο πλοίο",
};
inline constexpr std::string_view kJapaneseTitles[] = {
    "灯台の夜", "雨の停留所", "紙の船", "遅い電車", "港の猫", "窓辺のラジオ", "最後の渡し舟",
};
inline constexpr std::string_view kRussianTitles[] = {
    "Тихая вода",    "Последний трамвай", "Бумажный фонарь", "Окно на север",
    "Медный чайник", "Снег на причале",   "Долгий мост",
};
inline constexpr std::string_view kTurkishTitles[] = {
    "Son vapur",      "Çay bardağı",   "İskelede gece", "Kağıt gemi",
    "Yağmurlu durak", "Işık sönerken", "Üç köprü",
};

inline constexpr std::string_view kSpokenPatterns[] = {"Episode {n}: The {b}"};
inline constexpr std::string_view kChapterPatterns[] = {"Chapter {n}: {a} {b}"};

inline constexpr std::string_view kComposers[] = {
    "Theodor Lindwurm",      "Cosima Quadri",   "Anselm Vogelsang-Rey", "Józefa Wierzbówna",
    "Etienne Quartefeuille", "Birgitta Ödmark", "Aurelio Tramontano",
};
inline constexpr std::string_view kLyricists[] = {"Rosalie Ardent", "Côme Vaubernier"};
inline constexpr std::string_view kTraditional[] = {"Traditional"};

enum class StyleId {
  kAlternative,
  kAmbient,
  kBlues,
  kChanson,
  kClassical,
  kElectronic,
  kFolk,
  kHipHop,
  kJazz,
  kPop,
  kRock,
  kSoul,
  kSoundtrack,
  kGerman,
  kNordic,
  kIberian,
  kGreek,
  kJapanese,
  kRussian,
  kTurkish,
  kMiniature,
  kAudiobook,
  kPodcast,
};

struct Range {
  uint32_t lowest;
  uint32_t highest;
};

/// The properties of an artist's tracks.
struct Style {
  std::string_view genre;
  Words patterns;
  Words first;
  Words second;
  Range seconds;         ///< a track's length
  Range tracks;          ///< on an album
  Words composers = {};  ///< an album has one; an empty list: not known
  uint32_t discs = 1;    ///< to which an album's tracks are distributed
};

/// Indexed by StyleId.
inline constexpr Style kStyles[] = {
    {"Alternative", kPlainPatterns, kQualities, kThings, {150, 330}, {6, 9}},
    {"Ambient", kMachinePatterns, kMachineQualities, kThings, {260, 780}, {4, 6}},
    {"Blues", kPlainPatterns, kQualities, kThings, {160, 400}, {5, 7}},
    {"Chanson", kFrenchPatterns, kFrenchQualities, kFrenchThings, {130, 250}, {5, 6}, kLyricists},
    {"Classical", kMovementPatterns, kForms, kKeys, {170, 720}, {8, 8}, kComposers, 2},
    {"Electronic", kMachinePatterns, kMachineQualities, kMachineThings, {200, 460}, {6, 8}},
    {"Folk", kPlainPatterns, kQualities, kThings, {140, 320}, {6, 8}, kTraditional},
    {"Hip-Hop", kPlainPatterns, kLoudQualities, kThings, {120, 260}, {6, 8}},
    {"Jazz", kJazzPatterns, kHours, kHotelThings, {210, 620}, {5, 6}},
    {"Pop", kPlainPatterns, kQualities, kHotelThings, {140, 240}, {6, 9}},
    {"Rock", kPlainPatterns, kLoudQualities, kHotelThings, {150, 420}, {6, 8}},
    {"Soul", kPlainPatterns, kQualities, kHotelThings, {160, 300}, {6, 8}},
    {"Soundtrack", kMachinePatterns, kQualities, kThings, {60, 290}, {9, 12}, kComposers},
    {"World", kOwnTitle, {}, kGermanTitles, {150, 280}, {8, 8}},
    {"World", kOwnTitle, {}, kNordicTitles, {170, 330}, {8, 8}, kTraditional},
    {"World", kOwnTitle, {}, kIberianTitles, {150, 310}, {8, 8}},
    {"World", kOwnTitle, {}, kGreekTitles, {170, 320}, {7, 7}},
    {"World", kOwnTitle, {}, kJapaneseTitles, {180, 330}, {7, 7}},
    {"World", kOwnTitle, {}, kRussianTitles, {160, 300}, {7, 7}},
    {"World", kOwnTitle, {}, kTurkishTitles, {150, 290}, {7, 7}},
    {"Electronic", kMachinePatterns, kMachineQualities, kMachineThings, {20, 40}, {8, 8}},
    {"Audiobook", kChapterPatterns, kQualities, kThings, {900, 2700}, {7, 10}},
    {"Podcast", kSpokenPatterns, {}, kThings, {1200, 3900}, {8, 10}},
};

/// The sample rates of an album's tracks.
enum class Rates { kCd, kDvd, kBroadcast, kChanging };

/// Hz; the album's tracks use them in turn. Indexed by Rates.
inline constexpr std::array<uint32_t, 4> kSampleRates[] = {
    {44100, 44100, 44100, 44100},
    {48000, 48000, 48000, 48000},
    {32000, 32000, 32000, 32000},
    {44100, 48000, 32000, 48000},
};

struct ArtistRow {
  std::string_view name;
  StyleId style;
  uint32_t firstYear;  ///< of the first album; each further one is two years later
  std::array<std::string_view, 3> albums;
  Rates rates = Rates::kCd;
};

inline constexpr ArtistRow kArtists[] = {
    {"Aalto Varispeed", StyleId::kMiniature, 2004, {"Changing Rates"}, Rates::kChanging},
    {"Brevity Street", StyleId::kMiniature, 2005, {"Half-Minute Songs"}},

    {"Bramble Telegraph", StyleId::kAlternative, 1998, {"Hedge Signals", "Wires over Water"}},
    {"The Crane Operators", StyleId::kAlternative, 2003, {"Counterweight"}},
    {"Dovecote Riot", StyleId::kAlternative, 2001, {"Feather Weather"}},
    {"Glasshouse Weather", StyleId::kAlternative, 1996, {"Condensation", "Putty & Lead"}},
    {"The Second Lighthouse", StyleId::kAlternative, 2006, {"Lamp Room", "Live at the Pump House"}},
    {"Quarterlight", StyleId::kAlternative, 1999, {"Nearside", "Offside"}},

    {"Fennimore Drift", StyleId::kAmbient, 1994, {"Slow Cartography"}, Rates::kDvd},
    {"Low Orbit Choir", StyleId::kAmbient, 2000, {"Perigee", "Apogee"}},
    {"Moss Observatory", StyleId::kAmbient, 2002, {"Lichen Hours"}},
    {"Undertow Index", StyleId::kAmbient, 2005, {"Fathom Tables"}},

    {"Amos Ferriday", StyleId::kBlues, 1958, {"Gravel Road Ledger", "Levee Time"}},
    {"Big Lottie Prewitt", StyleId::kBlues, 1961, {"Pawnshop Sunday"}, Rates::kBroadcast},
    {"The Coal Barge Five", StyleId::kBlues, 1966, {"Tow Rope"}},
    {"Slow Eddie Marchbanks", StyleId::kBlues, 1972, {"Seven Miles of Bad Fence"}},

    {"Éloïse Carrefour", StyleId::kChanson, 1967, {"Les heures tièdes", "Rue du Tilleul"}},
    {"Jean-Noël Ardoise", StyleId::kChanson, 1974, {"Le café d'en face est fermé"}},
    {"Margot Brûlefer", StyleId::kChanson, 1999, {"L'été de l'épicier"}},
    {"Les Parapluies Pressés", StyleId::kChanson, 2003, {"Averses", "Éclaircies"}},

    {"Kammerorchester Süderweide", StyleId::kClassical, 1986, {"Konzerte für Fagott"}},
    {"Quartetto Belvento", StyleId::kClassical, 1991, {"String Quartets, Book I"}},
    {"Ottilie Grünfels", StyleId::kClassical, 1979, {"Nocturnes for a Small Piano"}},
    {"The Pennywhistle Sinfonia", StyleId::kClassical, 1995, {"Serenades", "More Serenades"}},
    {"Ågot Fjellstrøm", StyleId::kClassical, 2001, {"Fjord Suites"}, Rates::kDvd},
    {"The Very Reverend Percival Oakes-Thornbury and His Municipal Orchestra of Slightly Damp "
     "Instruments, with the Combined Ladies' Choirs of Upper and Lower Wexcombe",
     StyleId::kClassical,
     1963,
     {"Live from the Winter Pavilion"}},

    {"Kilohertz Nursery", StyleId::kElectronic, 2003, {"Lullabies in 48k"}, Rates::kDvd},
    {"Neon Ferry", StyleId::kElectronic, 1985, {"Night Crossing", "Duty Free"}},
    {"Pulsar Laundry", StyleId::kElectronic, 1997, {"Forty Degrees", "Delicates"}},
    {"Vektorfeld", StyleId::kElectronic, 1981, {"Gradient", "Divergenz", "Rotation"}},
    {"Zirkel & Lot", StyleId::kElectronic, 2000, {"Blaupause"}},
    {"Qy", StyleId::kElectronic, 2006, {"Uv"}},

    {"Annick Penhallow", StyleId::kFolk, 1971, {"Tin and Heather"}},
    {"The Barley Rowers", StyleId::kFolk, 1976, {"Oar Songs", "Stubble Fields"}},
    {"Fionnuala Ashgrove", StyleId::kFolk, 1989, {"Letters Not Sent by Sea"}},
    {"Gwenllian Tidewell", StyleId::kFolk, 1993, {"The Peat Cutter's Daughter"}},
    {"The Threadbare Sisters", StyleId::kFolk, 2002, {"Darning", "Patchwork Radio"}},
    {"Rinaldo Spiccioli", StyleId::kFolk, 2004, {"Busking for 12 €"}},

    {"Ledger & Loam", StyleId::kHipHop, 1998, {"Compound Interest"}},
    {"MC Parenthesis", StyleId::kHipHop, 2001, {"(Aside)"}},
    {"Tall Abacus", StyleId::kHipHop, 1999, {"Carry the One", "Long Division"}},
    {"Verse Municipal", StyleId::kHipHop, 2005, {"Bus Lane Poetry"}},

    {"Clementine Rusk Trio", StyleId::kJazz, 1959, {"Eleven Short Stairs", "Umbrella Stand"}},
    {"Dexter Quillfeather", StyleId::kJazz, 1962, {"Torn Notebook"}},
    {"The Hotel Lobby Four", StyleId::kJazz, 1957, {"Checkout at Noon"}, Rates::kBroadcast},
    {"Inês Caldeirão Quinteto", StyleId::kJazz, 1988, {"Água de Rega"}},
    {"Otto Steinmilch", StyleId::kJazz, 1994, {"Halbe Noten"}},
    {"Wendell Inkpen Nonet", StyleId::kJazz, 1965, {"Brass Weather", "Live at the Pump House"}},

    {"Astrid Monsoon", StyleId::kPop, 1984, {"Barometer Pop"}},
    {"Candy Semaphore", StyleId::kPop, 1996, {"Flags", "Wave Back"}},
    {"Daisy Overpass", StyleId::kPop, 2003, {"On-Ramp"}},
    {"The Fizzy Almanacs", StyleId::kPop, 1966, {"Thirty Days Hath"}},
    {"Juno Parcel", StyleId::kPop, 2005, {"Signed For", "Left with a Neighbour"}},
    {"Lulu Montgolfier", StyleId::kPop, 1987, {"Hot Air"}},
    {"Mint Carousel", StyleId::kPop, 2000, {"Round Again", "Spare Change Summer"}},
    {"Pixel Picnic", StyleId::kPop, 2007, {"Basket 🧺 Mode"}},
    {"Polly & the Postcodes", StyleId::kPop, 1982, {"Second Class"}},
    {"Tabitha Typewell", StyleId::kPop, 1991, {"Tab Stops"}},

    {"The Anvil Choirboys", StyleId::kRock, 1978, {"Forge"}},
    {"Brickfield Avenue", StyleId::kRock, 1994, {"Kiln", "Mortar"}},
    {"Diesel Hymnal", StyleId::kRock, 1989, {"Idle"}},
    {"Gravel Parade", StyleId::kRock, 1971, {"Loose Chippings", "Soft Shoulder"}},
    {"Iron Gazebo", StyleId::kRock, 1980, {"Bandstand"}},
    {"The Lesser Pylons", StyleId::kRock, 1997, {"Substation", "Overhead Lines"}},
    {"Mothwing Engine", StyleId::kRock, 1975, {"Cold Start"}},
    {"Rust & Bunting", StyleId::kRock, 2002, {"Village Fête of Doom"}},
    {"Thunder Librarian", StyleId::kRock, 1999, {"Overdue", "Shhh", "Returned Unread"}},
    {"The Touring Caravans", StyleId::kRock, 1973, {"Awning"}},
    {"Zebra Culvert", StyleId::kRock, 2004, {"Storm Drain"}},

    {"Bernadette Larkspur", StyleId::kSoul, 1969, {"Velvet Timetable"}},
    {"Cornelius Plumtree", StyleId::kSoul, 1973, {"Sunday Shoes"}},
    {"Odessa Wintergreen", StyleId::kSoul, 1976, {"Warm Front", "Porch Light Season"}},
    {"The Quince Set", StyleId::kSoul, 1964, {"Thick Cut"}},

    {"Lars Überfähr", StyleId::kSoundtrack, 1993, {"Die letzte Fähre"}},
    {"Miranda Foxglove-Hale", StyleId::kSoundtrack, 2003, {"The Clockmaker's Winter"}},
    {"Studio Orchestra of Port Amity", StyleId::kSoundtrack, 1968, {"Meridian Station"}},

    {"Schräge Töne", StyleId::kGerman, 1983, {"Großstadtgeräusche"}},
    {"Hedda Björkstig", StyleId::kNordic, 1998, {"Mellan två broar"}},
    {"Los Faroles del Puerto", StyleId::kIberian, 1986, {"Marea baja"}},
    {"Τα Φανάρια του Όρμου", StyleId::kGreek, 1990, {"Νυχτερινό πλοίο"}},
    {"霧笛楽団", StyleId::kJapanese, 2001, {"灯台の夜"}},
    {"Ночной Паром", StyleId::kRussian, 1997, {"Тихая вода"}},
    {"Çiçek Durağı", StyleId::kTurkish, 2005, {"Son vapur"}},

    {"Harriet Molescombe", StyleId::kAudiobook, 1998, {"The Ferryman's Ledger", "Low Tide"}},
    {"Cuthbert Ainsley-Wren", StyleId::kAudiobook, 2001, {"A Short History of Queues"}},
    {"Inge Halbmond", StyleId::kAudiobook, 2004, {"Das Haus an der Schleuse"}},
    {"Tobias Quill", StyleId::kAudiobook, 2006, {"Murder at the Model Railway"}},

    {"Radio Causeway", StyleId::kPodcast, 2006, {"Bridges and Tunnels Weekly"}},
    {"Lottie and Finn", StyleId::kPodcast, 2007, {"The Late Bus"}, Rates::kBroadcast},
    {"Kabinett der Karten", StyleId::kPodcast, 2007, {"Ränder der Landkarte"}},
    {"Port Amity Public Radio", StyleId::kPodcast, 2005, {"Weather for Sailors"}},
};

/// An album on which every track is by another artist.
struct CompilationRow {
  std::string_view name;
  uint32_t year;
  size_t firstArtist;  ///< index in kArtists
  size_t artistStep;
  size_t tracks;
};

inline constexpr CompilationRow kCompilations[] = {
    {"Ferry Terminal Sampler", 2005, 2, 6, 12},
    {"Sommerfest am Kanal", 2007, 5, 7, 10},
};

template <StyleId kId>
constexpr bool hasGenreOf(const Track& track) {
  return track.genre == kStyles[static_cast<size_t>(kId)].genre;
}

/// A playlist has every `step`-th of the tracks that fit, up to `limit` of them.
struct PlaylistRow {
  std::string_view name;
  bool (*fits)(const Track& track);
  size_t step;
  size_t limit;
};

inline constexpr PlaylistRow kPlaylists[] = {
    {"Rate Changes", [](const Track& track) { return track.artist == kArtists[0].name; }, 1, 100},
    {"Short Tracks", [](const Track& track) { return track.lengthMs < 41000; }, 1, 100},
    {"Not 44.1 kHz", [](const Track& track) { return track.sampleRate != 44100; }, 1, 200},
    {"Morning Drive", hasGenreOf<StyleId::kPop>, 2, 40},
    {"Motorway at Night", hasGenreOf<StyleId::kElectronic>, 2, 30},
    {"Rain on the Windscreen", hasGenreOf<StyleId::kAmbient>, 1, 30},
    {"Kitchen Radio", hasGenreOf<StyleId::kSoul>, 1, 20},
    {"Sunday, the Long Way Home", hasGenreOf<StyleId::kFolk>, 3, 25},
    {"Too Loud for Passengers", hasGenreOf<StyleId::kRock>, 2, 50},
    {"Hotel Bar", hasGenreOf<StyleId::kJazz>, 1, 100},
    {"Für unterwegs", hasGenreOf<StyleId::kGreek>, 1, 60},
    {"Été à la mer", hasGenreOf<StyleId::kChanson>, 1, 60},
    {"旅の音楽", [](const Track& track) { return track.artist == "霧笛楽団"; }, 1, 100},
    {"Traffic Jam", [](const Track& track) { return track.lengthMs > 600000; }, 1, 100},
    {"Before 1970", [](const Track& track) { return track.releaseYear < 1970; }, 1, 150},
    {"A Bit of Everything", [](const Track& /*track*/) { return true; }, 3, 300},
    {"The One Song", hasGenreOf<StyleId::kBlues>, 1, 1},
    {"Nothing Yet", hasGenreOf<StyleId::kPop>, 1, 0},
};

}  // namespace simulator
