#!/bin/sh
# What an operator does with the command kh: looks into a delivery, corrects it, checks it. Each line is shown
# before it runs.
# Usage: operator.sh FILE SCHEMA FOLDER     a product file, an XSD, and where the work is done
set -eu

mkdir -p "$3"
cp "$1" "$3/product.EOF"
cp "$2" "$3/sea_heights.xsd"
cd "$3"
chmod u+w product.EOF
rm -f product.EOF.old new.EOF dump.json again.EOF

set -v

# What is it?
kh info product.EOF
kh header show -i Mission -i File_Class -i Validity_Start product.EOF
kh ls --tree --depth 2 --at /Orvanto_File/Data_Block product.EOF

# What stands in it?
kh ls --at '/Orvanto_File/Data_Block/List_of_Passes/Pass[*]' -p Orbit:i,Track,Height:r,Height/@unit product.EOF
kh find --name Height --regex '^-' product.EOF

# A height is wrong, and the class: first a look at what would change, then the change; the old file is kept.
kh set --dry-run product.EOF '/Orvanto_File/Data_Block/List_of_Passes/Pass[2]/Height=0.031'
kh set --backup .old product.EOF '/Orvanto_File/Data_Block/List_of_Passes/Pass[2]/Height=0.031'
kh header set -s File_Class=TEST product.EOF
kh diff product.EOF.old product.EOF || echo "exit code $?"
kh diff --tolerance 0.1 --ignore File_Class product.EOF.old product.EOF

# Does it keep to its schema?
kh schema check -x sea_heights.xsd product.EOF
kh add product.EOF '/Orvanto_File/Data_Block/List_of_Passes/Pass[1]/Remark=checked'
kh schema check -x sea_heights.xsd product.EOF || echo "exit code $?"
kh rm product.EOF '/Orvanto_File/Data_Block/List_of_Passes/Pass[1]/Remark'

# To other programs, and back: the same bytes.
kh dump product.EOF > dump.json
kh load dump.json again.EOF
cmp product.EOF again.EOF
