#include "root/write/ClassTable.h"

namespace velmorak::root {
namespace {

constexpr std::string_view table = R"(
class TObject 1
  fUniqueID: unsigned int
  fBits: unsigned int = 50331648
class TNamed 1 TObject
  fName: TString
  fTitle: TString
class TObjString 1 TObject
  fString: TString
class TString 2
class TArray 1
  fN: int
class TArrayD 1 TArray
  fArray: double* [fN]
class TCollection 3 TObject
  fName: TString
  fSize: int
class TSeqCollection 0 TCollection #4234951622
class TList 5 TSeqCollection
class THashList 0 TList #3430828481
class TObjArray 3 TSeqCollection
  fLowerBound: int
  fLast: int
class TAttLine 2
  fLineColor: short = 1
  fLineStyle: short = 1
  fLineWidth: short = 1
class TAttFill 2
  fFillColor: short
  fFillStyle: short = 1001
class TAttMarker 2
  fMarkerColor: short = 1
  fMarkerStyle: short = 1
  fMarkerSize: float = 1
class TAtt3D 1
class TAttAxis 4
  fNdivisions: int = 510
  fAxisColor: short = 1
  fLabelColor: short = 1
  fLabelFont: short = 42
  fLabelOffset: float = 0.005
  fLabelSize: float = 0.035
  fTickLength: float = 0.03
  fTitleOffset: float = 1
  fTitleSize: float = 0.035
  fTitleColor: short = 1
  fTitleFont: short = 42
class TAxis 10 TNamed TAttAxis
  fNbins: int = 1
  fXmin: double
  fXmax: double = 1
  fXbins: TArrayD
  fFirst: int
  fLast: int
  fBits2: unsigned short
  fTimeDisplay: bool
  fTimeFormat: TString
  fLabels: THashList*
  fModLabs: TList*
class TH1 8 TNamed TAttLine TAttFill TAttMarker
  fNcells: int
  fXaxis: TAxis
  fYaxis: TAxis
  fZaxis: TAxis
  fBarOffset: short
  fBarWidth: short = 1000
  fEntries: double
  fTsumw: double
  fTsumw2: double
  fTsumwx: double
  fTsumwx2: double
  fMaximum: double = -1111
  fMinimum: double = -1111
  fNormFactor: double
  fContour: TArrayD
  fSumw2: TArrayD
  fOption: TString
  fFunctions: TList* ->
  fBufferSize: int
  fBuffer: double* [fBufferSize]
  fBinStatErrOpt: TH1::EBinErrorOpt
  fStatOverflows: TH1::EStatOverflows = 2
class TH1D 3 TH1 TArrayD
class TH2 5 TH1
  fScalefactor: double = 1
  fTsumwy: double
  fTsumwy2: double
  fTsumwxy: double
class TH2D 4 TH2 TArrayD
class TH3 6 TH1 TAtt3D
  fTsumwy: double
  fTsumwy2: double
  fTsumwxy: double
  fTsumwz: double
  fTsumwz2: double
  fTsumwxz: double
  fTsumwyz: double
class TH3D 4 TH3 TArrayD
class TProfile 7 TH1D
  fBinEntries: TArrayD
  fErrorMode: EErrorType
  fYmin: double
  fYmax: double
  fTsumwy: double
  fTsumwy2: double
  fBinSumw2: TArrayD
class TProfile2D 8 TH2D
  fBinEntries: TArrayD
  fErrorMode: EErrorType
  fZmin: double
  fZmax: double
  fTsumwz: double
  fTsumwz2: double
  fBinSumw2: TArrayD
class TGraph 4 TNamed TAttLine TAttFill TAttMarker
  fNpoints: int
  fX: double* [fNpoints]
  fY: double* [fNpoints]
  fFunctions: TList*
  fHistogram: TH1F*
  fMinimum: double = -1111
  fMaximum: double = -1111
class TGraphErrors 3 TGraph
  fEX: double* [fNpoints]
  fEY: double* [fNpoints]
class TGraphAsymmErrors 3 TGraph
  fEXlow: double* [fNpoints]
  fEXhigh: double* [fNpoints]
  fEYlow: double* [fNpoints]
  fEYhigh: double* [fNpoints]
class ROOT::TIOFeatures 1
  fIOBits: unsigned char
class TLeaf 2 TNamed
  fLen: int = 1
  fLenType: int
  fOffset: int
  fIsRange: bool
  fIsUnsigned: bool
  fLeafCount: TLeaf*
class TLeafC 1 TLeaf
  fMinimum: int
  fMaximum: int
class TLeafD 1 TLeaf
  fMinimum: double
  fMaximum: double
class TLeafI 1 TLeaf
  fMinimum: int
  fMaximum: int
class TLeafL 1 TLeaf
  fMinimum: Long64_t
  fMaximum: Long64_t
class TLeafO 1 TLeaf
  fMinimum: bool
  fMaximum: bool
class TBranch 13 TNamed TAttFill
  fCompress: int
  fBasketSize: int
  fEntryOffsetLen: int
  fWriteBasket: int
  fEntryNumber: Long64_t
  fIOFeatures: ROOT::TIOFeatures
  fOffset: int
  fMaxBaskets: int
  fSplitLevel: int
  fEntries: Long64_t
  fFirstEntry: Long64_t
  fTotBytes: Long64_t
  fZipBytes: Long64_t
  fBranches: TObjArray
  fLeaves: TObjArray
  fBaskets: TObjArray
  fBasketBytes: int* [fMaxBaskets]
  fBasketEntry: Long64_t* [fMaxBaskets]
  fBasketSeek: Long64_t* [fMaxBaskets]
  fFileName: TString
class TTree 20 TNamed TAttLine TAttFill TAttMarker
  fEntries: Long64_t
  fTotBytes: Long64_t
  fZipBytes: Long64_t
  fSavedBytes: Long64_t
  fFlushedBytes: Long64_t
  fWeight: double = 1
  fTimerInterval: int
  fScanField: int = 25
  fUpdate: int
  fDefaultEntryOffsetLen: int = 1000
  fNClusterRange: int
  fMaxEntries: Long64_t = 1000000000000
  fMaxEntryLoop: Long64_t = 1000000000000
  fMaxVirtualSize: Long64_t
  fAutoSave: Long64_t = -300000000
  fAutoFlush: Long64_t = -30000000
  fEstimate: Long64_t = 1000000
  fClusterRangeEnd: Long64_t* [fNClusterRange]
  fClusterSize: Long64_t* [fNClusterRange]
  fIOFeatures: ROOT::TIOFeatures
  fBranches: TObjArray
  fLeaves: TObjArray
  fAliases: TList*
  fIndexValues: TArrayD
  fIndex: TArrayI
  fTreeIndex: TVirtualIndex*
  fFriends: TList*
  fUserInfo: TList*
  fBranchRef: TBranchRef*
class TStreamerElement 4 TNamed
  fType: int
  fSize: int
  fArrayLength: int
  fArrayDim: int
  fMaxIndex: int 5
  fTypeName: TString
class TStreamerBase 3 TStreamerElement
  fBaseVersion: int
class TStreamerBasicType 2 TStreamerElement
class TStreamerBasicPointer 2 TStreamerElement
  fCountVersion: int
  fCountName: TString
  fCountClass: TString
class TStreamerObject 2 TStreamerElement
class TStreamerObjectAny 2 TStreamerElement
class TStreamerObjectPointer 2 TStreamerElement
class TStreamerString 2 TStreamerElement
class TStreamerInfo 9 TNamed
  fCheckSum: unsigned int
  fClassVersion: int
  fElements: TObjArray*
)";

}  // namespace

std::string_view classTable() {
    return table;
}

}  // namespace velmorak::root
