#!/bin/sh
# The recipes of the cookbook for the shell, with the command kh.
# Usage: cookbook.sh FILE
set -eu

cp "$1" product.EOF
cp "$1" other.EOF
chmod u+w product.EOF other.EOF

# Values, one a line.
kh get product.EOF '/Orvanto_File/Data_Block/List_of_Passes/Pass[*]/Height'

# A value in a script, and what to do where it is missing.
if orbit=$(kh get product.EOF '/Orvanto_File/Data_Block/List_of_Passes/Pass[9]/Orbit' 2>/dev/null); then
    echo "the ninth pass is of orbit $orbit"
else
    echo "no ninth pass"
fi

# Numbers of many files, as JSON.
kh get --json -p '/Orvanto_File/Data_Block/List_of_Passes/@count:i' product.EOF other.EOF

# One item of the header in many files; the old files stay beside the new ones.
kh header set -b .old -s File_Class=TEST product.EOF other.EOF
kh get -p /Orvanto_File/Orvanto_Header/Fixed_Header/File_Class product.EOF product.EOF.old

# The parts of product file names.
kh name split QK1_OPER_SEAHEIGHTS_20310412T060000_20310412T073000_0001.EOF
