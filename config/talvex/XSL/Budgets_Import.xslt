<?xml version="1.0" encoding="UTF-8"?>
<!-- Turns the XML of an exported workbook back into the budget import document: from the sheets Budgets, Lines
     and Relations every row with anything in it below the headings. A workbook without these sheets becomes a
     document that the schema refuses. Each element tells the sheet and the row that it comes from; its code
     stays the first attribute. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="xml" encoding="UTF-8" indent="no"/>

  <!-- The cells that are read, by sheet and row. -->
  <xsl:key name="row" match="WorkSheet[@Name='Lines']/Cell[@Column &lt; 5]" use="concat('Lines ', @Row)"/>
  <xsl:key name="row" match="WorkSheet[@Name='Budgets']/Cell" use="concat('Budgets ', @Row)"/>
  <xsl:key name="row" match="WorkSheet[@Name='Relations']/Cell" use="concat('Relations ', @Row)"/>

  <xsl:template match="/B2BEXCEL">
    <BudgetImport>
      <xsl:for-each select="WorkSheet[@Name='Budgets' or @Name='Lines' or @Name='Relations']">
        <Sheet name="{@Name}"/>
      </xsl:for-each>
      <xsl:apply-templates select="WorkSheet[@Name='Budgets']/Cell[@Row &gt; 1][not(@Row = preceding-sibling::Cell[1]/@Row)]" mode="budget"/>
      <xsl:apply-templates select="WorkSheet[@Name='Lines']/Cell[@Row &gt; 1][not(@Row = preceding-sibling::Cell[1]/@Row)]" mode="line"/>
      <xsl:apply-templates select="WorkSheet[@Name='Relations']/Cell[@Row &gt; 1][not(@Row = preceding-sibling::Cell[1]/@Row)]" mode="relation"/>
    </BudgetImport>
  </xsl:template>

  <!-- Each template below makes one element of a row, at the row's first cell. -->

  <xsl:template match="Cell" mode="budget">
    <xsl:variable name="row" select="key('row', concat(../@Name, ' ', @Row))"/>
    <BudgetHeader budgetCode="{$row[@Column=1]}" sheet="{../@Name}" row="{@Row}">
      <BudgetType>
        <xsl:call-template name="type">
          <xsl:with-param name="text" select="string($row[@Column=2])"/>
        </xsl:call-template>
      </BudgetType>
      <Currency><xsl:value-of select="$row[@Column=3]"/></Currency>
      <AdministrativeOffice><xsl:value-of select="$row[@Column=4]"/></AdministrativeOffice>
      <ChargeType><xsl:value-of select="$row[@Column=5]"/></ChargeType>
      <BudgetHolder><xsl:value-of select="$row[@Column=6]"/></BudgetHolder>
      <ApprovalReqd><xsl:value-of select="$row[@Column=7]"/></ApprovalReqd>
      <WarnMultiples><xsl:value-of select="$row[@Column=8]"/></WarnMultiples>
    </BudgetHeader>
  </xsl:template>

  <xsl:template match="Cell" mode="line">
    <xsl:variable name="row" select="key('row', concat(../@Name, ' ', @Row))"/>
    <BudgetLine budgetCode="{$row[@Column=1]}" sheet="{../@Name}" row="{@Row}">
      <EffectiveDate><xsl:value-of select="$row[@Column=2]"/></EffectiveDate>
      <!-- An empty one would be no date; one that is left out is an open end. -->
      <xsl:if test="$row[@Column=3]">
        <ExpiryDate><xsl:value-of select="$row[@Column=3]"/></ExpiryDate>
      </xsl:if>
      <BudgetAmnt><xsl:value-of select="$row[@Column=4]"/></BudgetAmnt>
    </BudgetLine>
  </xsl:template>

  <xsl:template match="Cell" mode="relation">
    <xsl:variable name="row" select="key('row', concat(../@Name, ' ', @Row))"/>
    <BudgetRelation budgetCode="{$row[@Column=1]}" sheet="{../@Name}" row="{@Row}">
      <ChildBudget><xsl:value-of select="$row[@Column=2]"/></ChildBudget>
    </BudgetRelation>
  </xsl:template>

  <!-- The types in the languages in which they are exported; any other text stays what it is. -->
  <xsl:template name="type">
    <xsl:param name="text"/>
    <xsl:choose>
      <xsl:when test="$text='Standard' or $text='Standaardbudget' or $text='Standardbudget'">STANDARD</xsl:when>
      <xsl:when test="$text='Aggregate' or $text='Verzamelbudget' or $text='Sammelbudget' or $text='Agrégé'">
        <xsl:text>AGGREGATE</xsl:text>
      </xsl:when>
      <xsl:otherwise><xsl:value-of select="$text"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>
</xsl:stylesheet>
