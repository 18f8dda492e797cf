#pragma once

#include <array>
#include <string>

// One entry for each word: its constant's name without the leading g, and the text.
#define ACCREDIT_PMML_VOCABULARY(WORD)                                    \
    WORD(PMML, "PMML")                                                    \
    WORD(Version, "version")                                              \
    WORD(VersionNumber, "3.1")                                            \
    WORD(Xmlns, "xmlns")                                                  \
    WORD(PMMLNamespace, "http://www.dmg.org/PMML-3_1")                    \
    WORD(XmlnsXsi, "xmlns:xsi")                                           \
    WORD(XSINamespace, "http://www.w3.org/2001/XMLSchema-instance")       \
    WORD(SchemaLocation, "xsi:schemaLocation")                            \
    WORD(SchemaLocationValue, "http://www.dmg.org/PMML-3_1 pmml-3-1.xsd") \
    WORD(Header, "Header")                                                \
    WORD(Copyright, "copyright")                                          \
    WORD(LegalNotice, "Copyright (c) 2026 The Accredit authors")          \
    WORD(Description, "description")                                      \
    WORD(Application, "Application")                                      \
    WORD(Annotation, "Annotation")                                        \
    WORD(Name, "name")                                                    \
    WORD(Timestamp, "Timestamp")                                          \
    WORD(DataDictionary, "DataDictionary")                                \
    WORD(NumberOfFields, "numberOfFields")                                \
    WORD(DataField, "DataField")                                          \
    WORD(DisplayName, "displayName")                                      \
    WORD(Optype, "optype")                                                \
    WORD(Categorical, "categorical")                                      \
    WORD(Continuous, "continuous")                                        \
    WORD(Ordinal, "ordinal")                                              \
    WORD(Value, "Value")                                                  \
    WORD(ValueAttribute, "value")                                         \
    WORD(DisplayValue, "displayValue")                                    \
    WORD(DataType, "dataType")                                            \
    WORD(String, "string")                                                \
    WORD(Float, "float")                                                  \
    WORD(Double, "double")                                                \
    WORD(Property, "property")                                            \
    WORD(Missing, "missing")                                              \
    WORD(Valid, "valid")                                                  \
    WORD(Invalid, "invalid")                                              \
    WORD(Extension, "Extension")                                          \
    WORD(Extender, "extender")                                            \
    WORD(ExtenderId, "Accredit")                                          \
    WORD(MissingInterval, "missingInterval")                              \
    WORD(InvalidRangeLower, "invalidRangeLower")                          \
    WORD(InvalidRangeUpper, "invalidRangeUpper")                          \
    WORD(TransformationDictionary, "TransformationDictionary")            \
    WORD(DerivedField, "DerivedField")                                    \
    WORD(FieldRef, "FieldRef")                                            \
    WORD(Field, "field")                                                  \
    WORD(Discretize, "Discretize")                                        \
    WORD(DiscretizeBin, "DiscretizeBin")                                  \
    WORD(BinValue, "binValue")                                            \
    WORD(Interval, "Interval")                                            \
    WORD(Closure, "closure")                                              \
    WORD(OpenOpen, "openOpen")                                            \
    WORD(OpenClosed, "openClosed")                                        \
    WORD(ClosedOpen, "closedOpen")                                        \
    WORD(ClosedClosed, "closedClosed")                                    \
    WORD(LeftMargin, "leftMargin")                                        \
    WORD(RightMargin, "rightMargin")                                      \
    WORD(FunctionName, "functionName")                                    \
    WORD(Classification, "classification")                                \
    WORD(Regression, "regression")                                        \
    WORD(ModelName, "modelName")                                          \
    WORD(AlgorithmName, "algorithmName")                                  \
    WORD(FieldName, "fieldName")                                          \
    WORD(MiningSchema, "MiningSchema")                                    \
    WORD(MiningField, "MiningField")                                      \
    WORD(UsageName, "name")                                               \
    WORD(UsageType, "usageType")                                          \
    WORD(Active, "active")                                                \
    WORD(Predicted, "predicted")                                          \
    WORD(ModelStats, "ModelStats")                                        \
    WORD(UnivariateStats, "UnivariateStats")                              \
    WORD(Array, "Array")                                                  \
    WORD(ArraySize, "n")                                                  \
    WORD(Type, "type")                                                    \
    WORD(Real, "real")                                                    \
    WORD(Int, "int")                                                      \
    WORD(Matrix, "Matrix")                                                \
    WORD(Kind, "kind")                                                    \
    WORD(Diagonal, "diagonal")                                            \
    WORD(Covariances, "Covariances")                                      \
    WORD(Partition, "Partition")                                          \
    WORD(PartitionFieldStats, "PartitionFieldStats")                      \
    WORD(N, "N")                                                          \
    WORD(Counts, "Counts")                                                \
    WORD(TotalFreq, "totalFreq")                                          \
    WORD(InvalidFreq, "invalidFreq")                                      \
    WORD(MissingFreq, "missingFreq")                                      \
    WORD(DiscrStats, "DiscrStats")                                        \
    WORD(NumericInfo, "NumericInfo")                                      \
    WORD(Minimum, "minimum")                                              \
    WORD(Maximum, "maximum")                                              \
    WORD(Mean, "mean")                                                    \
    WORD(StandardDeviation, "standardDeviation")                          \
    WORD(Median, "median")                                                \
    WORD(ContStats, "ContStats")                                          \
    WORD(ContainerModel, "containerModel")

namespace MCDetail {

/// The words from which PMML documents are made, each a global constant: gPMML, gVersion and so on.
#define ACCREDIT_DECLARE_WORD(name, text) extern const std::string g##name;
ACCREDIT_PMML_VOCABULARY(ACCREDIT_DECLARE_WORD)
#undef ACCREDIT_DECLARE_WORD

/// All of them, in order.
extern const std::array<const std::string*, 96> gVocabulary;

}  // namespace MCDetail
